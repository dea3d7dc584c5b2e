#pragma once

#include <wayland-protocols/wlr-output-power-management-unstable-v1-client.h>

#include <memory>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/wayland/output_power.h"

namespace orvane {

template <>
struct WaylandRelease<zwlr_output_power_manager_v1> {
    void operator()(zwlr_output_power_manager_v1* proxy) const {
        zwlr_output_power_manager_v1_destroy(proxy);
    }
};
template <>
struct WaylandRelease<zwlr_output_power_v1> {
    void operator()(zwlr_output_power_v1* proxy) const { zwlr_output_power_v1_destroy(proxy); }
};

/// Screen power by wlr-output-power-management-v1.
class WlrScreenPower : public OutputPower {
  public:
    explicit WlrScreenPower(WaylandDisplay& display)
        : OutputPower(display, zwlr_output_power_manager_v1_interface) {}

    std::string name() const override { return "wlr-output-power-management"; }

  protected:
    void bindManager(const WaylandGlobal& global) override;
    void dropManager() override { manager_.reset(); }
    std::unique_ptr<Watch> watch(wl_output* output, Handler handler) override;

  private:
    struct Power;

    WaylandHandle<zwlr_output_power_manager_v1> manager_;
};

}  // namespace orvane
