#pragma once

#include <string>

#include "foundation/internal.h"

namespace orvane {

/// Name of the icon theme that the user's desktop uses: KDE's own setting there, the desktop interface
/// setting, GTK's settings file, else "Adwaita".
std::string currentIconThemeName();

}  // namespace orvane
