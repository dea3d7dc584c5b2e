#pragma once

#include <string>

#include "foundation/internal.h"

namespace orvane {

/// Where the script's reports arrive: this method takes one text.
inline constexpr const char* kwinReportPath = "/org/orvane/KWin1";
inline constexpr const char* kwinReportInterface = "org.orvane.KWin1";
inline constexpr const char* kwinReportMethod = "SetWindows";

/// A script for KWin 5 and 6 that calls the method on the connection of that name with all windows, front to
/// back, as JSON: at once and after every change.
std::string kwinScript(const std::string& connection);

}  // namespace orvane
