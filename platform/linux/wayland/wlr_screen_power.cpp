#include "platform/linux/wayland/wlr_screen_power.h"

#include <algorithm>

namespace orvane {

const zwlr_output_power_v1_listener WlrScreenPower::kListener{&WlrScreenPower::modeChanged,
                                                              &WlrScreenPower::failed};

WlrScreenPower::WlrScreenPower(WaylandDisplay& display) : display_(display) { display.add(*this); }

bool WlrScreenPower::isAvailable() const {
    return display_.answers() && std::any_of(outputs_.begin(), outputs_.end(),
                                             [](const auto& each) { return each.second.isOn.has_value(); });
}

bool WlrScreenPower::areScreensOff() const {
    return isAvailable() && std::none_of(outputs_.begin(), outputs_.end(),
                                         [](const auto& each) { return each.second.isOn.value_or(false); });
}

void WlrScreenPower::globalAdded(const WaylandGlobal& global) {
    if (global.interface == zwlr_output_power_manager_v1_interface.name && !manager_) {
        manager_.reset(
            display_.bind<zwlr_output_power_manager_v1>(global, zwlr_output_power_manager_v1_interface, 1));
        managerName_ = global.name;
    } else if (global.interface == wl_output_interface.name) {
        outputs_[global.name].output.reset(display_.bind<wl_output>(global, wl_output_interface, 1));
    } else {
        return;
    }
    watchOutputs();
}

void WlrScreenPower::watchOutputs() {
    if (!manager_) return;
    for (auto& [name, output] : outputs_) {
        if (output.power) continue;
        output.power.reset(
            zwlr_output_power_manager_v1_get_output_power(manager_.get(), output.output.get()));
        zwlr_output_power_v1_add_listener(output.power.get(), &kListener, this);
    }
}

void WlrScreenPower::globalRemoved(std::uint32_t name) {
    if (manager_ && name == managerName_) {
        // What it made stays in use.
        manager_.reset();
    } else if (outputs_.erase(name) != 0) {
        changed();
    }
}

void WlrScreenPower::compositorLost() {
    outputs_.clear();
    manager_.reset();
    changed();
}

void WlrScreenPower::modeChanged(void* self, zwlr_output_power_v1* power, std::uint32_t mode) {
    auto& source = *static_cast<WlrScreenPower*>(self);
    for (auto& [name, output] : source.outputs_) {
        if (output.power.get() == power) output.isOn = mode != ZWLR_OUTPUT_POWER_V1_MODE_OFF;
    }
    source.changed();
}

void WlrScreenPower::failed(void* self, zwlr_output_power_v1* power) {
    auto& source = *static_cast<WlrScreenPower*>(self);
    // Its object stays, so that the output is not asked again and again.
    for (auto& [name, output] : source.outputs_) {
        if (output.power.get() == power) output.isOn.reset();
    }
    source.changed();
}

void WlrScreenPower::changed() {
    if (noticeTimer_.isPending()) return;
    noticeTimer_.start(0, [this] {
        if (onChanged) onChanged();
    });
}

}  // namespace orvane
