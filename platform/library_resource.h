#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "foundation/internal.h"

namespace orvane {

/// The file that holds the library's code: the shared library, or a program that it was linked into.
std::filesystem::path libraryFile();

/// Where a resource that ships with the library lies. Looked for in the folder that the environment variable
/// ORVANE_RESOURCES names; then as `share/orvane/NAME.EXTENSION` beside or above the folder that the library
/// was loaded from, which finds it in an installed tree and in a moved one; last in the tree that the library
/// was built from. None when it is missing.
std::optional<std::filesystem::path> libraryResource(std::string_view name, std::string_view extension);

}  // namespace orvane
