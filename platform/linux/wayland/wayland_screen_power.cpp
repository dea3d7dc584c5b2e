#include "platform/linux/wayland/wayland_screen_power.h"

#include <algorithm>
#include <utility>

namespace orvane {

void WaylandOutputPower::setOn(std::optional<bool> isOn) {
    isOn_ = isOn;
    if (onChanged) onChanged();
}

WaylandScreenPower::WaylandScreenPower(WaylandDisplay& display, std::string managerInterface)
    : display_(display), managerInterface_(std::move(managerInterface)) {
    display.add(*this);
}

bool WaylandScreenPower::isAvailable() const {
    return display_.answers() && std::any_of(outputs_.begin(), outputs_.end(), [](const auto& each) {
               return each.second.power && each.second.power->isOn();
           });
}

bool WaylandScreenPower::areScreensOff() const {
    return isAvailable() && std::none_of(outputs_.begin(), outputs_.end(), [](const auto& each) {
               return each.second.power && each.second.power->isOn().value_or(false);
           });
}

void WaylandScreenPower::globalAdded(const WaylandGlobal& global) {
    if (global.interface == managerInterface_ && !hasManager()) {
        bindManager(display_, global);
        managerName_ = global.name;
    } else if (global.interface == wl_output_interface.name) {
        outputs_[global.name].output.reset(display_.bind<wl_output>(global, wl_output_interface, 1));
    } else {
        return;
    }
    watchOutputs();
}

void WaylandScreenPower::watchOutputs() {
    if (!hasManager()) return;
    for (auto& [name, output] : outputs_) {
        if (output.power) continue;
        output.power = watch(output.output.get());
        output.power->onChanged = [this] { changed(); };
    }
}

void WaylandScreenPower::globalRemoved(std::uint32_t name) {
    if (hasManager() && name == managerName_) {
        // What it made stays in use.
        releaseManager();
    } else if (outputs_.erase(name) != 0) {
        changed();
    }
}

void WaylandScreenPower::compositorLost() {
    outputs_.clear();
    releaseManager();
    changed();
}

void WaylandScreenPower::changed() {
    if (noticeTimer_.isPending()) return;
    noticeTimer_.start(0, [this] {
        if (onChanged) onChanged();
    });
}

}  // namespace orvane
