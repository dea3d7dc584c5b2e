#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/image.h"
#include "foundation/notification_center.h"

namespace orvane {

inline constexpr const char* NSWorkspaceDidActivateApplicationNotification =
    "NSWorkspaceDidActivateApplicationNotification";
inline constexpr const char* NSWorkspaceScreensDidSleepNotification =
    "NSWorkspaceScreensDidSleepNotification";
inline constexpr const char* NSWorkspaceScreensDidWakeNotification = "NSWorkspaceScreensDidWakeNotification";
inline constexpr const char* NSWorkspaceWillSleepNotification = "NSWorkspaceWillSleepNotification";
inline constexpr const char* NSWorkspaceDidWakeNotification = "NSWorkspaceDidWakeNotification";

/// Identifier under which a locked screen is reported as the frontmost application.
inline constexpr const char* loginWindowIdentifier = "com.apple.loginwindow";

/// An application that runs.
struct RunningApplication {
    /// Absent when the desktop cannot tell which application the process is.
    std::optional<std::string> bundleIdentifier;
    /// The process that owns its windows; 0 when unknown.
    std::int32_t processIdentifier = 0;
};

/// Which applications there are and which one is in front. Main thread only.
class ORVANE_EXPORT Workspace {
  public:
    virtual ~Workspace() = default;

    /// The application that receives key events; none when no application does or no desktop answers.
    virtual std::optional<RunningApplication> frontmostApplication() = 0;
    /// Where the application with that identifier is installed; none when it is unknown.
    virtual std::optional<std::filesystem::path> URLForApplicationWithBundleIdentifier(
        std::string_view identifier) = 0;
    /// The folder or file that carries the application's bundle information; none when it is unknown.
    virtual std::optional<std::string> absolutePathForAppBundleWithIdentifier(
        std::string_view identifier) = 0;
    /// The icon of a file or application, drawn into 32 × 32 pixels; no pixels when there is none.
    virtual Image iconForFile(const std::filesystem::path& path) = 0;
    /// Posts the notifications above, on the main thread.
    virtual NotificationCenter& notificationCenter() = 0;
};

}  // namespace orvane
