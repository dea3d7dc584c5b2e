#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/date.h"
#include "foundation/error.h"
#include "foundation/internal.h"
#include "persistence/model.h"

namespace orvane {

/// One thing found about a store.
struct StoreFinding {
    enum class Kind {
        damage,  ///< something that the library never writes; answers may be wrong
        oddity,  ///< something that can come about, such as by a clock that was set back, but deserves a look
    };
    Kind kind = Kind::damage;
    std::string what;
    std::uint64_t rows = 0;  ///< how many rows it is about; 0 when it is not about rows
};

struct StoreCheck {
    std::vector<StoreFinding> findings;
    std::vector<std::pair<std::string, std::uint64_t>> rows;  ///< by entity, as far as they can be counted
    /// A save was cut off. It is not part of what was looked at, and is taken back by the next program that
    /// opens the store.
    bool cutSaveLeftOut = false;

    bool isSound() const {
        for (const StoreFinding& finding : findings)
            if (finding.kind == StoreFinding::Kind::damage) return false;
        return true;
    }
};

/// Looks through the whole file: SQLite's own invariants, tables and metadata, keys, relationships, dates and
/// intervals. `today` is when dates begin to lie in the future. Reads only; a program that tracks into the
/// store may have to wait with its saves. `next` is told what is looked at next.
///
/// What is wrong with the file is a finding. None, with an error, only when the file cannot be looked at: it
/// is missing, locked, not permitted, no database, of another application or newer.
std::optional<StoreCheck> checkStore(const std::filesystem::path& file, const ManagedObjectModel& model,
                                     Date today, const std::function<void(const std::string&)>& next,
                                     Error* error);

}  // namespace orvane
