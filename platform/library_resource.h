#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "foundation/internal.h"

namespace orvane {

/// Where a resource that ships with the library lies: `share/orvane/NAME.EXTENSION` beside or above the
/// folder that the library was loaded from, which finds it in an installed tree, a moved one and a build
/// folder. None when it is missing.
std::optional<std::filesystem::path> libraryResource(std::string_view name, std::string_view extension);

}  // namespace orvane
