#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/replay/trace_line.h"

namespace orvane::host {

/// Reads a date and time of ISO 8601 in its extended form, with seconds and a zone:
/// "2026-03-02T08:00:00.25Z", or with "+01:00" in place of the Z. To the nearest microsecond, since the Unix
/// epoch. None for any other text and for a day or time that does not exist (a leap second, which the Unix
/// epoch does not count, among them).
std::optional<TraceTime> parseEpoch(std::string_view text);

/// Whether the system's time zone database has a zone of that name; "UTC" is always known.
bool isKnownTimeZone(const std::string& name);

}  // namespace orvane::host
