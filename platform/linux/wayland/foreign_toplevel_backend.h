#pragma once

#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"
#include "platform/linux/main_loop_timer.h"
#include "platform/linux/process_search.h"
#include "platform/linux/wayland/foreign_toplevel.h"
#include "platform/linux/wayland/wayland_display.h"

namespace orvane {

template <>
struct WaylandRelease<zwlr_foreign_toplevel_manager_v1> {
    void operator()(zwlr_foreign_toplevel_manager_v1* proxy) const {
        zwlr_foreign_toplevel_manager_v1_destroy(proxy);
    }
};

/// Windows of any compositor that offers wlr-foreign-toplevel-management. The protocol tells neither
/// processes nor an order: processes are searched for by application, and of the windows the one that was
/// active last counts as the frontmost.
class ForeignToplevelBackend : public DesktopBackend, public WaylandListener {
  public:
    /// Adds itself to the display, which must be started later and be destroyed first or be disconnected
    /// before this is destroyed.
    explicit ForeignToplevelBackend(WaylandDisplay& display, ProcessSearch processes = ProcessSearch());

    std::string name() const override { return "wlr-foreign-toplevel-management"; }
    bool isAvailable() const override { return display_.answers() && manager_; }
    bool isDecided() const override { return display_.isDecided() && !noticeTimer_.isPending(); }
    std::optional<DesktopWindow> activeWindow() override;
    std::vector<DesktopWindow> windows() override;

    void globalAdded(const WaylandGlobal& global) override;
    void globalRemoved(std::uint32_t name) override;
    void compositorReady() override { noticeSoon(); }
    void compositorLost() override;

  private:
    using Toplevels = std::list<std::unique_ptr<ForeignToplevel>>;

    void added(zwlr_foreign_toplevel_handle_v1* handle);
    void changed(Toplevels::iterator toplevel);
    void drop();
    const ForeignToplevel* active() const;
    DesktopWindow describe(const ForeignToplevel& toplevel);
    std::int32_t processOf(const std::string& applicationIdentifier);
    void noticeSoon();
    void tellNow();

    static const zwlr_foreign_toplevel_manager_v1_listener kListener;

    WaylandDisplay& display_;
    const ProcessSearch processes_;
    WaylandHandle<zwlr_foreign_toplevel_manager_v1> manager_;
    std::uint32_t managerName_ = 0;
    std::int64_t lastNumber_ = 0;
    /// The one that was active last comes first.
    Toplevels toplevels_;
    /// By application; forgotten whenever a window comes or goes.
    std::map<std::string, std::int32_t> foundProcesses_;
    MainLoopTimer noticeTimer_;
};

}  // namespace orvane
