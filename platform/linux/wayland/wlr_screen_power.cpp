#include "platform/linux/wayland/wlr_screen_power.h"

namespace orvane {

template <>
struct WaylandRelease<zwlr_output_power_v1> {
    void operator()(zwlr_output_power_v1* proxy) const { zwlr_output_power_v1_destroy(proxy); }
};

namespace {

class OutputPower : public WaylandOutputPower {
  public:
    explicit OutputPower(zwlr_output_power_v1* power) : power_(power) {
        // One that failed stays, so that the output is not asked again and again.
        static constexpr zwlr_output_power_v1_listener listener{
            [](void* self, zwlr_output_power_v1*, std::uint32_t mode) {
                static_cast<OutputPower*>(self)->setOn(mode != ZWLR_OUTPUT_POWER_V1_MODE_OFF);
            },
            [](void* self, zwlr_output_power_v1*) { static_cast<OutputPower*>(self)->setOn(std::nullopt); }};
        zwlr_output_power_v1_add_listener(power, &listener, this);
    }

  private:
    WaylandHandle<zwlr_output_power_v1> power_;
};

}  // namespace

WlrScreenPower::WlrScreenPower(WaylandDisplay& display)
    : WaylandScreenPower(display, zwlr_output_power_manager_v1_interface.name) {}

void WlrScreenPower::bindManager(WaylandDisplay& display, const WaylandGlobal& global) {
    manager_.reset(
        display.bind<zwlr_output_power_manager_v1>(global, zwlr_output_power_manager_v1_interface, 1));
}

std::unique_ptr<WaylandOutputPower> WlrScreenPower::watch(wl_output* output) {
    return std::make_unique<OutputPower>(
        zwlr_output_power_manager_v1_get_output_power(manager_.get(), output));
}

}  // namespace orvane
