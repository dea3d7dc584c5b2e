#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "foundation/error.h"
#include "foundation/internal.h"
#include "persistence/model.h"

namespace orvane {

struct RecoveredEntity {
    std::string name;
    std::uint64_t rows = 0;
    std::uint64_t looseRows = 0;    ///< of these, found on pages that nothing led to any more
    std::uint64_t missingRows = 0;  ///< at the most: as many keys lie in places that could not be read
    std::uint64_t standIns = 0;     ///< made because other rows are related to them
};

struct RecoveryReport {
    std::vector<RecoveredEntity> entities;
    std::uint64_t damagedPages = 0;
    std::uint64_t missingPages = 0;     ///< behind the end of a file that was cut short
    std::uint64_t unreadableBytes = 0;  ///< that the disk did not give
    bool schemaLost = false;            ///< the tables were told apart by what their rows look like
};

struct RecoveryOptions {
    /// Text of an attribute of a row that stands in for one that is lost, by its key; none: it stays absent.
    std::function<std::optional<std::string>(const EntityDescription& entity, const std::string& attribute,
                                             std::int64_t key)>
        standInText;
    std::function<void(const std::string& phase, std::uint64_t done, std::uint64_t total)> advance;
    /// Asked now and then; true ends the work with nothing made.
    std::function<bool()> isInterrupted;
};

/// Saves what can be read of a damaged store into a new one, with the same keys. The damaged file is not
/// changed or opened by SQLite: it is copied, what its journal holds is put back in the copy, and the copy is
/// read page by page. The new file is there in full, with mode 0600, or not at all.
///
/// None, with an error, when `to` exists or cannot be written, or when nothing in `from` looks like a store
/// of the model; an error of code 0 when it was interrupted.
std::optional<RecoveryReport> recoverStore(const std::filesystem::path& from, const std::filesystem::path& to,
                                           const ManagedObjectModel& model, const RecoveryOptions& options,
                                           Error* error);

}  // namespace orvane
