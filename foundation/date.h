#pragma once

#include <chrono>
#include <string>

#include "foundation/export.h"

namespace orvane {

/// Absolute point in time, in decimal seconds since the Unix epoch. `std::chrono::system_clock::now()`
/// converts to it as it is.
using Date = std::chrono::sys_time<std::chrono::duration<double>>;

/// Decimal seconds with six decimals, held exactly.
using DecimalSeconds = std::chrono::microseconds;

/// Seconds since the Unix epoch.
constexpr double secondsSinceEpoch(Date date) { return date.time_since_epoch().count(); }

constexpr Date dateFromSecondsSinceEpoch(double seconds) {
    return Date(std::chrono::duration<double>(seconds));
}

/// Seconds from `start` to `end`, rounded to six decimals as the text form "%f" rounds them. A span that is
/// not a number counts as zero; one beyond the range of the type (about 292,000 years) yields the nearest
/// limit.
ORVANE_EXPORT DecimalSeconds decimalSeconds(double seconds);

/// Fixed-point text with exactly six decimals, such as "-0.250000".
ORVANE_EXPORT std::string decimalText(DecimalSeconds seconds);

/// ISO 8601 text in UTC with microseconds when there are any, such as "2026-03-02T08:00:00Z"; for dates
/// outside the years 0 to 9999 the plain number of seconds since the epoch.
ORVANE_EXPORT std::string description(Date date);

}  // namespace orvane
