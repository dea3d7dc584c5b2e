#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"
#include "platform/linux/kwin/plasma_desktops.h"
#include "platform/linux/kwin/plasma_window.h"
#include "platform/linux/main_loop_timer.h"
#include "platform/linux/wayland/wayland_display.h"

namespace orvane {

template <>
struct WaylandRelease<org_kde_plasma_window_management> {
    void operator()(org_kde_plasma_window_management* proxy) const {
        org_kde_plasma_window_management_destroy(proxy);
    }
};

/// Windows of KWin by its own Wayland protocol. KWin offers it only to programs whose desktop entry asks for
/// it (X-KDE-Wayland-Interfaces). Main thread only.
class PlasmaBackend : public DesktopBackend, public WaylandListener {
  public:
    /// Adds itself to the display, which must be started later and be destroyed first or be disconnected
    /// before this is destroyed.
    explicit PlasmaBackend(WaylandDisplay& display);

    /// Whether this is what the backend can use.
    static bool isUsable(const WaylandGlobal& global);

    std::string name() const override { return "KWin (window management)"; }
    bool isAvailable() const override { return display_.answers() && manager_; }
    bool isDecided() const override;
    std::optional<DesktopWindow> activeWindow() override;
    std::vector<DesktopWindow> windows() override;

    void globalAdded(const WaylandGlobal& global) override;
    void globalRemoved(std::uint32_t name) override;
    void compositorReady() override { noticeSoon(); }
    void compositorLost() override { drop(); }

  private:
    using Manager = org_kde_plasma_window_management;

    void added(const std::string& identifier);
    void setOrder(const char* identifiers);
    void drop();
    bool isOnScreen(const PlasmaWindow& window) const;
    const PlasmaWindow* active() const;
    static DesktopWindow describe(const PlasmaWindow& window);
    void noticeSoon();
    void tellNow();

    static const org_kde_plasma_window_management_listener kListener;

    WaylandDisplay& display_;
    PlasmaDesktops desktops_;
    WaylandHandle<Manager> manager_;
    std::uint32_t managerName_ = 0;
    std::int64_t lastNumber_ = 0;
    /// By KWin's identifiers.
    std::map<std::string, std::unique_ptr<PlasmaWindow>> windows_;
    /// Identifiers, from the bottom to the top; also of windows that are not told.
    std::vector<std::string> order_;
    bool isShowingDesktop_ = false;
    MainLoopTimer noticeTimer_;
};

}  // namespace orvane
