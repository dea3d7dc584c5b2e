#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "persistence/model.h"
#include "persistence/sqlite/database.h"
#include "persistence/sqlite/schema.h"

namespace orvane::sqlite {

/// What lies in a database file, as seen from a model.
struct StoreInspection {
    bool empty = false;       ///< nothing was ever written to it; the rest then says nothing
    bool writeAhead = false;  ///< it is in write-ahead mode
    std::string storeIdentifier;
    /// The model it was written with; none when that is the given one.
    std::shared_ptr<const ManagedObjectModel> storedModel;
    /// Indexes of the given model that miss or were changed. Only told when the file is of that model.
    std::vector<IndexText> indexesToMake;
};

/// Looks at header, metadata and schema, at none of the rows: the effort does not depend on how many there
/// are. None, with an error, when the file is no sound store of this model or of an older one. Writes
/// nothing.
std::optional<StoreInspection> inspectStore(Database& database, const ManagedObjectModel& model,
                                            Error* error);

}  // namespace orvane::sqlite
