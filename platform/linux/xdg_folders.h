#pragma once

#include <filesystem>
#include <vector>

#include "foundation/internal.h"

namespace orvane {

// Folders after the XDG base directory rules. A value that is no absolute path is ignored, as they demand.

std::filesystem::path homeFolder();
/// `$XDG_CONFIG_HOME`, or ~/.config.
std::filesystem::path configFolder();
/// `$XDG_DATA_HOME`, or ~/.local/share.
std::filesystem::path dataFolder();
/// The data folder and then those of `$XDG_DATA_DIRS`, the most important one first.
std::vector<std::filesystem::path> dataFolders();

}  // namespace orvane
