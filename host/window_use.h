#pragma once

#include <string>
#include <vector>

#include "reporting/range_item.h"

namespace orvane::host {

/// How long a title was shown.
struct WindowUse {
    std::string title;
    DecimalSeconds duration{0};
};

/// The titles behind an application, longest first; having none counts as a title of its own, an empty one.
std::vector<WindowUse> windowsOf(const RangeItem& app);

}  // namespace orvane::host
