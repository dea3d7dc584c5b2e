#pragma once

#include <wayland-protocols/plasma-virtual-desktop-client.h>

#include <functional>
#include <map>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/wayland/wayland_display.h"

namespace orvane {

template <>
struct WaylandRelease<org_kde_plasma_virtual_desktop_management> {
    void operator()(org_kde_plasma_virtual_desktop_management* proxy) const {
        org_kde_plasma_virtual_desktop_management_destroy(proxy);
    }
};
template <>
struct WaylandRelease<org_kde_plasma_virtual_desktop> {
    void operator()(org_kde_plasma_virtual_desktop* proxy) const {
        org_kde_plasma_virtual_desktop_destroy(proxy);
    }
};

/// Which of KWin's virtual desktops is on the screen. Main thread only.
class PlasmaDesktops final : public WaylandListener {
  public:
    /// Adds itself to the display, which must be started later and be destroyed first or be disconnected
    /// before this is destroyed.
    explicit PlasmaDesktops(WaylandDisplay& display);

    /// Its identifier; empty while none is known.
    const std::string& current() const { return current_; }

    /// Called after `current` has changed.
    std::function<void()> onChanged;

    void globalAdded(const WaylandGlobal& global) override;
    void globalRemoved(std::uint32_t name) override;
    void compositorLost() override;

  private:
    using Management = org_kde_plasma_virtual_desktop_management;
    using Desktop = org_kde_plasma_virtual_desktop;

    void added(const char* identifier);
    void setCurrent(const std::string& identifier);
    static void activated(void* self, Desktop* desktop);

    static const org_kde_plasma_virtual_desktop_management_listener kManagementListener;
    static const org_kde_plasma_virtual_desktop_listener kDesktopListener;

    WaylandDisplay& display_;
    WaylandHandle<Management> management_;
    std::uint32_t managementName_ = 0;
    /// By their identifiers.
    std::map<std::string, WaylandHandle<Desktop>> desktops_;
    std::string current_;
};

}  // namespace orvane
