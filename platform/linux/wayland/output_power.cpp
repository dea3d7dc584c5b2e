#include "platform/linux/wayland/output_power.h"

#include <algorithm>

namespace orvane {

OutputPower::OutputPower(WaylandDisplay& display, const wl_interface& manager)
    : display_(display), manager_(manager) {
    display.add(*this);
}

bool OutputPower::isAvailable() const {
    return display_.answers() && std::any_of(outputs_.begin(), outputs_.end(),
                                             [](const auto& each) { return each.second.isOn.has_value(); });
}

bool OutputPower::areScreensOff() const {
    return isAvailable() && std::none_of(outputs_.begin(), outputs_.end(),
                                         [](const auto& each) { return each.second.isOn.value_or(false); });
}

void OutputPower::globalAdded(const WaylandGlobal& global) {
    if (global.interface == manager_.name && !managerName_) {
        bindManager(global);
        managerName_ = global.name;
    } else if (global.interface == wl_output_interface.name) {
        outputs_[global.name].output.reset(display_.bind<wl_output>(global, wl_output_interface, 1));
    } else {
        return;
    }
    watchOutputs();
}

void OutputPower::watchOutputs() {
    if (!managerName_) return;
    for (auto& [name, output] : outputs_) {
        if (output.power) continue;
        output.power = watch(output.output.get(), [this, &isOn = output.isOn](std::optional<bool> told) {
            isOn = told;
            changed();
        });
    }
}

void OutputPower::globalRemoved(std::uint32_t name) {
    if (managerName_ == name) {
        dropManager();
        managerName_.reset();
    } else if (outputs_.erase(name) != 0) {
        changed();
    }
}

void OutputPower::compositorLost() {
    outputs_.clear();
    dropManager();
    managerName_.reset();
    changed();
}

void OutputPower::changed() {
    if (noticeTimer_.isPending()) return;
    noticeTimer_.start(0, [this] {
        if (onChanged) onChanged();
    });
}

}  // namespace orvane
