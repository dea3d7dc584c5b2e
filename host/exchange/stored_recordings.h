#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "foundation/date.h"
#include "foundation/error.h"
#include "foundation/value.h"
#include "persistence/managed_object_context.h"
#include "store/orvane_recording.h"

namespace orvane::host {

/// Which recordings are meant: those that begin no later than a date, if one is given, and for which a
/// predicate holds. The date stands apart because the walk through the store goes by it.
struct RecordingFilter {
    std::optional<Date> lastStart;
    std::string format;
    std::vector<Value> arguments;
};

/// Gets a recording, and how many there are in all. False ends the walk.
using RecordingUse = std::function<bool(const OrvaneRecording& recording, std::size_t total)>;

/// Calls `use` with each recording that the filter lets through, in the order of their starts, those without
/// a start first. They are fetched in pieces of about `pieceSize` of each idle state. False, with an error,
/// when the store cannot be read.
bool forEachRecording(ManagedObjectContext& context, const RecordingFilter& filter, Error* error,
                      const RecordingUse& use, std::size_t pieceSize = 10000);

}  // namespace orvane::host
