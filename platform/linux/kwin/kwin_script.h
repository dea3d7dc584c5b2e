#pragma once

#include <string>

#include "foundation/internal.h"

namespace orvane {

/// Where the script's reports arrive: this method takes one text.
inline constexpr const char* kwinReportPath = "/org/orvane/KWin1";
inline constexpr const char* kwinReportInterface = "org.orvane.KWin1";
inline constexpr const char* kwinReportMethod = "SetWindows";

/// A script for KWin 5 and 6 that calls the method on the connection of that name with all windows, front to
/// back, as JSON: at once, and after changes when the last call was answered. When the connection is gone, it
/// asks KWin to remove the script of that name, which is to be its own.
std::string kwinScript(const std::string& connection, const std::string& name);

}  // namespace orvane
