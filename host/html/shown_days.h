#pragma once

#include <optional>
#include <vector>

#include "host/date_range.h"
#include "host/html/calendar.h"
#include "reporting/range_item.h"

namespace orvane::host {

/// The applications among the items and beneath their groups, longest first within their group.
std::vector<Ref<RangeItem>> applicationsOf(const std::vector<Ref<RangeItem>>& items);

/// Days that a page shows.
struct ShownDays {
    CalendarDay first;
    CalendarDay last;

    int count() const { return static_cast<int>((last - first).count()) + 1; }
};

/// The days of the range. Of a range longer than two months only those from the first to the last use: `all`
/// does not begin in the year 1. None when nothing was used in such a range.
std::optional<ShownDays> shownDays(const DateRange& range, const std::vector<Ref<RangeItem>>& applications);

}  // namespace orvane::host
