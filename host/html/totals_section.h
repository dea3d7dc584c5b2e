#pragma once

#include <vector>

#include "host/html/markup.h"
#include "reporting/range_item.h"

namespace orvane::host {

/// Adds a section with the time of each group and application.
void addTotals(Markup& page, const std::vector<Ref<RangeItem>>& items);

/// Adds a section with the titles behind each application, longest first. Of very many only the longest are
/// told apart.
void addWindows(Markup& page, const std::vector<Ref<RangeItem>>& items);

}  // namespace orvane::host
