#pragma once

#include <wayland-protocols/plasma-window-management-client.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"
#include "platform/linux/wayland/wayland_handle.h"

namespace orvane {

template <>
struct WaylandRelease<org_kde_plasma_window> {
    void operator()(org_kde_plasma_window* proxy) const { org_kde_plasma_window_destroy(proxy); }
};

/// One window as KWin's plasma-window-management tells it.
class PlasmaWindow {
  public:
    /// Takes the handle, which KWin has yet to describe. `number` is the window's for its life.
    PlasmaWindow(org_kde_plasma_window* handle, std::int64_t number);
    PlasmaWindow(const PlasmaWindow&) = delete;
    PlasmaWindow& operator=(const PlasmaWindow&) = delete;

    /// The first description is complete.
    bool isDescribed() const { return isDescribed_; }
    bool isActive() const;
    /// Described, not minimized, and not on other virtual desktops than the given one.
    bool isOnScreen(const std::string& currentDesktop) const;
    DesktopWindow describe() const;

    /// Set by the owner.
    std::function<void()> onChanged;
    /// The window is gone. May destroy this object.
    std::function<void()> onClosed;

  private:
    bool has(std::uint32_t state) const { return (states_ & state) != 0; }
    int layer() const;
    /// Before the description is complete nobody needs to know.
    void changed() const;

    static const org_kde_plasma_window_listener kListener;

    WaylandHandle<org_kde_plasma_window> handle_;
    const std::int64_t number_;
    bool isDescribed_ = false;
    std::string title_;
    std::string applicationIdentifier_;
    std::int32_t processIdentifier_ = 0;
    /// Bits of the protocol's enumeration "state".
    std::uint32_t states_ = 0;
    /// Empty for a window that is on all of them.
    std::set<std::string> desktops_;
};

}  // namespace orvane
