#pragma once

#include <wayland-protocols/dpms-client.h>

#include "foundation/internal.h"
#include "platform/linux/wayland/wayland_screen_power.h"

namespace orvane {

template <>
struct WaylandRelease<org_kde_kwin_dpms_manager> {
    void operator()(org_kde_kwin_dpms_manager* proxy) const { org_kde_kwin_dpms_manager_destroy(proxy); }
};

/// Screen power by org_kde_kwin_dpms, which KWin offers.
class KdeScreenPower : public WaylandScreenPower {
  public:
    explicit KdeScreenPower(WaylandDisplay& display);

    std::string name() const override { return "org_kde_kwin_dpms"; }

  protected:
    bool hasManager() const override { return manager_ != nullptr; }
    void bindManager(WaylandDisplay& display, const WaylandGlobal& global) override;
    void releaseManager() override { manager_.reset(); }
    std::unique_ptr<WaylandOutputPower> watch(wl_output* output) override;

  private:
    WaylandHandle<org_kde_kwin_dpms_manager> manager_;
};

}  // namespace orvane
