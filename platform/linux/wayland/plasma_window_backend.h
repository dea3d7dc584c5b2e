#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"
#include "platform/linux/main_loop_timer.h"
#include "platform/linux/wayland/plasma_desktops.h"
#include "platform/linux/wayland/plasma_window.h"
#include "platform/linux/wayland/wayland_display.h"

namespace orvane {

template <>
struct WaylandRelease<org_kde_plasma_window_management> {
    void operator()(org_kde_plasma_window_management* proxy) const {
        org_kde_plasma_window_management_destroy(proxy);
    }
};

/// Windows of KWin by plasma-window-management: those on the virtual desktop that is shown, in their stacking
/// order. KWin offers it only to programs that have permission, see KWinPermission.
class PlasmaWindowBackend : public DesktopBackend, public WaylandListener {
  public:
    /// Adds itself to the display, which must be started later and be destroyed first or be disconnected
    /// before this is destroyed.
    explicit PlasmaWindowBackend(WaylandDisplay& display);

    /// Whether this is what the backend can use.
    static bool isUsable(const WaylandGlobal& global);

    std::string name() const override { return "KWin (plasma-window-management)"; }
    bool isAvailable() const override { return display_.answers() && management_; }
    bool isDecided() const override;
    std::optional<DesktopWindow> activeWindow() override;
    std::vector<DesktopWindow> windows() override;

    void globalAdded(const WaylandGlobal& global) override;
    void globalRemoved(std::uint32_t name) override;
    void compositorReady() override { noticeSoon(); }
    void compositorLost() override { drop(); }

  private:
    void added(const char* identifier);
    void setStacking(const std::string& identifiers);
    void drop();
    bool isOnScreen(const PlasmaWindow& window) const;
    const PlasmaWindow* active() const;
    void noticeSoon();
    void tell();

    static const org_kde_plasma_window_management_listener kListener;

    WaylandDisplay& display_;
    PlasmaDesktops desktops_;
    WaylandHandle<org_kde_plasma_window_management> management_;
    std::uint32_t managementName_ = 0;
    std::int64_t lastNumber_ = 0;
    /// By KWin's identifier.
    std::map<std::string, std::unique_ptr<PlasmaWindow>> windows_;
    /// Front to back; may name windows that are gone.
    std::vector<std::string> stacking_;
    /// The user has put all windows aside.
    bool isDesktopShown_ = false;
    bool toldAvailable_ = false;
    std::int64_t toldActive_ = 0;
    MainLoopTimer noticeTimer_;
};

}  // namespace orvane
