#pragma once

#include <wayland-protocols/wlr-output-power-management-unstable-v1-client.h>

#include "foundation/internal.h"
#include "platform/linux/wayland/wayland_screen_power.h"

namespace orvane {

template <>
struct WaylandRelease<zwlr_output_power_manager_v1> {
    void operator()(zwlr_output_power_manager_v1* proxy) const {
        zwlr_output_power_manager_v1_destroy(proxy);
    }
};

/// Screen power by wlr-output-power-management-v1.
class WlrScreenPower : public WaylandScreenPower {
  public:
    explicit WlrScreenPower(WaylandDisplay& display);

    std::string name() const override { return "wlr-output-power-management"; }

  protected:
    bool hasManager() const override { return manager_ != nullptr; }
    void bindManager(WaylandDisplay& display, const WaylandGlobal& global) override;
    void releaseManager() override { manager_.reset(); }
    std::unique_ptr<WaylandOutputPower> watch(wl_output* output) override;

  private:
    WaylandHandle<zwlr_output_power_manager_v1> manager_;
};

}  // namespace orvane
