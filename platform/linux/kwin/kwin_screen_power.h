#pragma once

#include <wayland-protocols/dpms-client.h>

#include <memory>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/wayland/output_power.h"

namespace orvane {

template <>
struct WaylandRelease<org_kde_kwin_dpms_manager> {
    void operator()(org_kde_kwin_dpms_manager* proxy) const { org_kde_kwin_dpms_manager_destroy(proxy); }
};
template <>
struct WaylandRelease<org_kde_kwin_dpms> {
    void operator()(org_kde_kwin_dpms* proxy) const { org_kde_kwin_dpms_release(proxy); }
};

/// Screen power as KWin tells it. Screens that cannot be switched off count as on.
class KwinScreenPower : public OutputPower {
  public:
    explicit KwinScreenPower(WaylandDisplay& display)
        : OutputPower(display, org_kde_kwin_dpms_manager_interface) {}

    std::string name() const override { return "KWin DPMS"; }

  protected:
    void bindManager(const WaylandGlobal& global) override;
    void dropManager() override { manager_.reset(); }
    std::unique_ptr<Watch> watch(wl_output* output, Handler handler) override;

  private:
    struct Power;

    WaylandHandle<org_kde_kwin_dpms_manager> manager_;
};

}  // namespace orvane
