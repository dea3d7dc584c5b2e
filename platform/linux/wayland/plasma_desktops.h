#pragma once

#include <wayland-protocols/plasma-virtual-desktop-client.h>

#include <functional>
#include <map>
#include <memory>
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

/// Which virtual desktop of KWin is shown. Main thread only.
class PlasmaDesktops : public WaylandListener {
  public:
    /// Adds itself to the display, which must be started later and be destroyed first or be disconnected
    /// before this is destroyed.
    explicit PlasmaDesktops(WaylandDisplay& display);
    virtual ~PlasmaDesktops() = default;
    PlasmaDesktops(const PlasmaDesktops&) = delete;
    PlasmaDesktops& operator=(const PlasmaDesktops&) = delete;

    /// Empty while it is not known.
    const std::string& current() const { return current_; }

    /// Set by the owner. Another desktop is shown.
    std::function<void()> onChanged;

    void globalAdded(const WaylandGlobal& global) override;
    void globalRemoved(std::uint32_t name) override;
    void compositorLost() override { drop(); }

  private:
    /// Tells its identifier to whom it belongs.
    struct Desktop {
        PlasmaDesktops* owner = nullptr;
        std::string identifier;
        WaylandHandle<org_kde_plasma_virtual_desktop> handle;
    };

    void created(const char* identifier);
    void drop();

    static const org_kde_plasma_virtual_desktop_management_listener kListener;
    static const org_kde_plasma_virtual_desktop_listener kDesktopListener;

    WaylandDisplay& display_;
    WaylandHandle<org_kde_plasma_virtual_desktop_management> management_;
    std::uint32_t managementName_ = 0;
    std::map<std::string, std::unique_ptr<Desktop>> desktops_;
    std::string current_;
};

}  // namespace orvane
