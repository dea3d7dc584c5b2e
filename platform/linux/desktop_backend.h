#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/shortcoming.h"

namespace orvane {

/// Layers that windows are on; what is in front of what, within limits that desktops do not agree on.
struct WindowLayer {
    static constexpr int below = -1;
    /// Normal application windows.
    static constexpr int normal = 0;
    static constexpr int floating = 3;
    static constexpr int dock = 20;
    static constexpr int menu = 24;
};

/// A window as the desktop describes it. Texts are valid UTF-8, empty when unknown.
struct DesktopWindow {
    /// The desktop's own number for the window; never 0.
    std::int64_t number = 0;
    /// Process that owns the window, as this process sees it; 0 when unknown.
    std::int32_t processIdentifier = 0;
    int layer = WindowLayer::normal;
    /// Absent when the window has no title.
    std::optional<std::string> title;
    std::string windowClass;
    std::string windowInstance;
    /// The identifier that GTK programs give for their application.
    std::string gtkApplicationId;
};

/// One kind of desktop that can be asked for its windows. Main thread only.
class DesktopBackend {
  public:
    virtual ~DesktopBackend();

    /// For diagnoses, such as "X11 (xcb)".
    virtual std::string name() const = 0;
    /// Whether the desktop answers at present.
    virtual bool isAvailable() const = 0;
    /// Whether the desktop was looked for and what was found was told; before that, one that is there may be
    /// missed.
    virtual bool isDecided() const { return true; }
    /// The window that receives key events; none when no window does or the desktop does not answer.
    virtual std::optional<DesktopWindow> activeWindow() = 0;
    /// The windows on screen, front to back.
    virtual std::vector<DesktopWindow> windows() = 0;
    /// Seconds since the user's last input; none when the desktop itself does not tell, as on Wayland, where
    /// an IdleSource may.
    virtual std::optional<double> idleSeconds() { return std::nullopt; }
    /// Whether onScreenSleepChanged is ever called.
    virtual bool tellsScreenSleep() const { return false; }
    /// What is missing, where this is the desktop that the backend is made for; else none.
    virtual std::optional<Shortcoming> shortcoming() const { return std::nullopt; }

    // Set by the platform; called on the main loop, never from within a call to the backend.

    /// Another window, or none, has become the active one.
    std::function<void()> onActiveWindowChanged;
    /// The screens were switched off, or on again.
    std::function<void(bool asleep)> onScreenSleepChanged;
    /// The desktop went away, or is back.
    std::function<void(bool available)> onAvailabilityChanged;

  protected:
    /// Tells how the desktop stands now, as far as that differs from what was told last; `active` is the
    /// number of the active window, 0 without one.
    void tell(bool available, std::int64_t active);
    /// The active window as it was told last; 0 for none.
    std::int64_t toldActive() const { return toldActive_; }
    /// None was active in between: the next `tell` tells the active window, even if it is the one told last.
    void forgetActive() { toldActive_ = 0; }

  private:
    bool toldAvailable_ = false;
    std::int64_t toldActive_ = 0;
};

}  // namespace orvane
