#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "foundation/value.h"

namespace orvane {

// Keys of a window description.
inline constexpr const char* kCGWindowNumber = "kCGWindowNumber";
inline constexpr const char* kCGWindowOwnerPID = "kCGWindowOwnerPID";
inline constexpr const char* kCGWindowLayer = "kCGWindowLayer";
inline constexpr const char* kCGWindowName = "kCGWindowName";
inline constexpr const char* kCGWindowOwnerName = "kCGWindowOwnerName";
/// Added by the tracker: the bundle identifier of the frontmost application.
inline constexpr const char* kCGWindowOwnerBundleIdentifier = "kCGWindowOwnerBundleIdentifier";

using WindowIdentifier = std::int64_t;

/// Options of a window list: bits of one number.
inline constexpr std::uint32_t kCGWindowListOptionOnScreenOnly = 1;
inline constexpr std::uint32_t kCGWindowListExcludeDesktopElements = 16;
inline constexpr WindowIdentifier kCGNullWindowID = 0;

/// State and event type that ask for the last input of any kind in the whole session.
inline constexpr std::int32_t kCGEventSourceStateCombinedSessionState = 0;
inline constexpr std::uint32_t kCGAnyInputEventType = 0xFFFFFFFF;

/// Key of the user defaults; when true, films and calls that keep the screens on count as input, where the
/// desktop can tell both kinds of idle time. Read when the desktop is first asked for.
inline constexpr const char* idleHeldBackByInhibitorsDefault = "OrvaneIdleHeldBackByInhibitors";

/// The windows on screen and the user's last input. Main thread only.
class ORVANE_EXPORT WindowServer {
  public:
    virtual ~WindowServer() = default;

    /// Identifiers of the windows that match the options, front to back; all of them when the reference
    /// window is 0.
    virtual std::vector<WindowIdentifier> windowListCreate(std::uint32_t options,
                                                           WindowIdentifier referenceWindow) = 0;
    /// One description for each identifier, in the same order; windows that went meanwhile are left out. A
    /// description holds the owner's process id and the layer (0: normal application windows) as numbers, and
    /// the window's and the owner's name where they are known.
    virtual std::vector<Dictionary> windowListCreateDescriptionFromArray(
        std::span<const WindowIdentifier> windows) = 0;
    /// Seconds since the last input event; 0 when the desktop cannot tell.
    virtual double secondsSinceLastEventType(std::int32_t state, std::uint32_t eventType) = 0;
};

}  // namespace orvane
