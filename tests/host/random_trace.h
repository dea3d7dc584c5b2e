#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/replay/trace_json.h"

namespace orvane::host {

/// What a made-up trace may hold beside the plain use of a desktop.
struct RandomTraceOptions {
    std::size_t events = 1000;  ///< at least 20
    bool clockSteps = false;
    bool storageFailures = false;
    bool hostEdits = false;       ///< groups, disabled applications, recordings that the host inserts
    bool longPauses = true;       ///< of more than a minute
    bool lostRecordings = false;  ///< "current" lines, and edits that are not saved
};

/// Windows of recordings that the host inserts begin so.
inline constexpr const char* hostWindow = "host ";

/// A trace from the seed, the same for the same seed: use of a few applications over some days, with sleep,
/// locks, idleness, switches of "OrvaneEnabled" and of the threshold. Every event is followed by a query of
/// the state, and twenty times by a dump and a report over all times.
std::vector<Json> randomTrace(std::uint32_t seed, const RandomTraceOptions& options);

/// The lines as the text of a trace.
std::string traceText(const std::vector<Json>& lines);

}  // namespace orvane::host
