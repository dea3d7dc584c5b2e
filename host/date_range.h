#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "foundation/date.h"

namespace orvane::host {

/// Two points in time, both inclusive.
struct DateRange {
    Date from;
    Date to;
};

/// Reads a range in the local time zone: `today`, `yesterday`, `week` and `month` and `year` (the present
/// one, up to its end), `all`, a date `2026-03-02`, a date with a time `2026-03-02T08:30` (to the end of its
/// day), or two of them as `FROM..TO`, either of which may be left out. None when it cannot be read;
/// `problem` then tells what would do.
std::optional<DateRange> parseDateRange(std::string_view text, Date now, std::string& problem);

}  // namespace orvane::host
