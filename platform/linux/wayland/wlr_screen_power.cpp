#include "platform/linux/wayland/wlr_screen_power.h"

#include <utility>

namespace orvane {

struct WlrScreenPower::Power : Watch {
    Power(zwlr_output_power_v1* power, Handler told) : object(power), handler(std::move(told)) {
        zwlr_output_power_v1_add_listener(power, &kListener, this);
    }

    static void mode(void* self, zwlr_output_power_v1*, std::uint32_t mode) {
        static_cast<Power*>(self)->handler(mode != ZWLR_OUTPUT_POWER_V1_MODE_OFF);
    }
    // The object stays, so that the output is not asked again and again.
    static void failed(void* self, zwlr_output_power_v1*) {
        static_cast<Power*>(self)->handler(std::nullopt);
    }

    static constexpr zwlr_output_power_v1_listener kListener{&mode, &failed};

    WaylandHandle<zwlr_output_power_v1> object;
    const Handler handler;
};

void WlrScreenPower::bindManager(const WaylandGlobal& global) {
    manager_.reset(
        display().bind<zwlr_output_power_manager_v1>(global, zwlr_output_power_manager_v1_interface, 1));
}

std::unique_ptr<OutputPower::Watch> WlrScreenPower::watch(wl_output* output, Handler handler) {
    return std::make_unique<Power>(zwlr_output_power_manager_v1_get_output_power(manager_.get(), output),
                                   std::move(handler));
}

}  // namespace orvane
