#pragma once

#include <string>

#include "reporting/range_item.h"

namespace orvane::host {

/// How an item's own colour is shown on a page.
struct ItemPaint {
    /// Declarations for a style attribute: the colour as "--c", that of the page itself for an item without
    /// one, and as "--rim" a shade of it that stands out where the colour alone would not.
    std::string style;
    /// Class that tells where the rim is needed: "pale" on a light page, "deep" on a dark one, or none.
    std::string classes;
};

ItemPaint paintOf(const RangeItem& item);

/// The item's name, or what else there is to tell it by.
std::string shownName(const RangeItem& item);

}  // namespace orvane::host
