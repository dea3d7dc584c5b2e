#pragma once

#include <wayland-protocols/wlr-output-power-management-unstable-v1-client.h>

#include <map>

#include "foundation/internal.h"
#include "platform/linux/main_loop_timer.h"
#include "platform/linux/screen_power_source.h"
#include "platform/linux/wayland/wayland_display.h"

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

/// Screen power by wlr-output-power-management-v1. Outputs that cannot tell are passed over; a compositor
/// without any output that can is not available.
class WlrScreenPower : public ScreenPowerSource, public WaylandListener {
  public:
    /// Adds itself to the display, which must be started later and be destroyed first or be disconnected
    /// before this is destroyed.
    explicit WlrScreenPower(WaylandDisplay& display);

    std::string name() const override { return "wlr-output-power-management"; }
    bool isAvailable() const override;
    bool areScreensOff() const override;

    void globalAdded(const WaylandGlobal& global) override;
    void globalRemoved(std::uint32_t name) override;
    void compositorReady() override { changed(); }
    void compositorLost() override;

  private:
    struct Output {
        WaylandHandle<wl_output> output;
        WaylandHandle<zwlr_output_power_v1> power;
        /// Absent until the compositor says so.
        std::optional<bool> isOn;
    };

    void watchOutputs();
    void changed();
    static void modeChanged(void* self, zwlr_output_power_v1* power, std::uint32_t mode);
    static void failed(void* self, zwlr_output_power_v1* power);

    static const zwlr_output_power_v1_listener kListener;

    WaylandDisplay& display_;
    WaylandHandle<zwlr_output_power_manager_v1> manager_;
    std::uint32_t managerName_ = 0;
    std::map<std::uint32_t, Output> outputs_;
    MainLoopTimer noticeTimer_;
};

}  // namespace orvane
