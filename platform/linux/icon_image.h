#pragma once

#include <filesystem>

#include "foundation/image.h"
#include "foundation/internal.h"
#include "platform/linux/icon_theme.h"

namespace orvane {

/// Draws an image file of any format that gdk-pixbuf reads into a square of that many pixels: its proportions
/// kept, centred, transparent around. No pixels when it cannot be read. A process of its own does it, which
/// is waited for, for two seconds at the most.
Image drawImageFile(const std::filesystem::path& file, int size);

/// The icon of a file, 32 pixels square: a desktop entry's own, that of the only entry in a folder, else that
/// of the kind of file. No pixels when there is none.
Image fileIcon(const std::filesystem::path& file, const IconTheme& theme);
/// The same in the desktop's current theme.
Image fileIcon(const std::filesystem::path& file);

}  // namespace orvane
