#pragma once

#include <wayland-protocols/plasma-window-management-client.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/wayland/wayland_handle.h"

namespace orvane {

template <>
struct WaylandRelease<org_kde_plasma_window> {
    void operator()(org_kde_plasma_window* proxy) const { org_kde_plasma_window_destroy(proxy); }
};

/// One window as KWin's window management tells it.
class PlasmaWindow {
  public:
    /// Takes the handle. `number` is the window's for its life.
    PlasmaWindow(org_kde_plasma_window* handle, std::int64_t number);
    PlasmaWindow(const PlasmaWindow&) = delete;
    PlasmaWindow& operator=(const PlasmaWindow&) = delete;

    std::int64_t number() const { return number_; }
    /// Whether it was described as a whole; until then the rest says nothing.
    bool isDescribed() const { return isDescribed_; }
    const std::optional<std::string>& title() const { return title_; }
    const std::string& applicationIdentifier() const { return applicationIdentifier_; }
    /// 0 when unknown.
    std::int32_t processIdentifier() const { return processIdentifier_; }
    bool isActive() const { return has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE); }
    bool isMinimized() const { return has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_MINIMIZED); }
    int layer() const;
    /// Of one that is on all virtual desktops, any.
    bool isOnDesktop(const std::string& desktop) const {
        return desktops_.empty() || desktops_.contains(desktop);
    }

    /// Set by the owner.
    std::function<void()> onChanged;
    /// The window is gone. May destroy this object.
    std::function<void()> onClosed;

  private:
    bool has(std::uint32_t state) const { return (states_ & state) != 0; }
    void changed();

    static const org_kde_plasma_window_listener kListener;

    WaylandHandle<org_kde_plasma_window> handle_;
    const std::int64_t number_;
    bool isDescribed_ = false;
    std::optional<std::string> title_;
    std::string applicationIdentifier_;
    std::int32_t processIdentifier_ = 0;
    std::uint32_t states_ = 0;
    std::set<std::string> desktops_;
};

}  // namespace orvane
