#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/html/markup.h"

namespace orvane::host {

/// What stands above the sections of a page.
struct PageHeading {
    std::string title;
    std::string subtitle;  ///< may be empty
    /// Figures that sum the page up, each with its name.
    std::vector<std::pair<std::string, std::string>> facts;
};

/// The whole page: it loads nothing, allows nothing to be loaded, and fits light and dark screens.
std::string framedPage(const PageHeading& heading, const Markup& sections, const std::string& footer);

}  // namespace orvane::host
