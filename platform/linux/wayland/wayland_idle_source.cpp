#include "platform/linux/wayland/wayland_idle_source.h"

#include <algorithm>
#include <utility>

#include "platform/linux/boot_time.h"

namespace orvane {

void WaylandSeatIdle::becameIdle() { since_ = secondsSinceBoot() - timeoutMilliseconds / 1000.0; }

double WaylandSeatIdle::seconds() const { return since_ ? std::max(0.0, secondsSinceBoot() - *since_) : 0; }

WaylandIdleSource::WaylandIdleSource(WaylandDisplay& display, std::string notifierInterface)
    : display_(display), notifierInterface_(std::move(notifierInterface)) {
    display.add(*this);
}

std::optional<double> WaylandIdleSource::idleSeconds() {
    if (!isAvailable()) return std::nullopt;
    double least = seats_.begin()->second.idle->seconds();
    for (const auto& [name, seat] : seats_) least = std::min(least, seat.idle->seconds());
    return least;
}

void WaylandIdleSource::globalAdded(const WaylandGlobal& global) {
    if (global.interface == notifierInterface_ && !hasNotifier()) {
        bindNotifier(display_, global);
        notifierName_ = global.name;
    } else if (global.interface == wl_seat_interface.name) {
        seats_[global.name].seat.reset(display_.bind<wl_seat>(global, wl_seat_interface, 1));
    } else {
        return;
    }
    watchSeats();
    availabilityMayHaveChanged();
}

void WaylandIdleSource::watchSeats() {
    if (!hasNotifier()) return;
    for (auto& [name, seat] : seats_) {
        if (!seat.idle) seat.idle = watch(seat.seat.get());
    }
}

void WaylandIdleSource::globalRemoved(std::uint32_t name) {
    if (hasNotifier() && name == notifierName_) {
        for (auto& [seatName, seat] : seats_) seat.idle.reset();
        releaseNotifier();
    } else if (seats_.erase(name) == 0) {
        return;
    }
    availabilityMayHaveChanged();
}

void WaylandIdleSource::compositorReady() { availabilityMayHaveChanged(); }

void WaylandIdleSource::compositorLost() {
    seats_.clear();
    releaseNotifier();
    availabilityMayHaveChanged();
}

void WaylandIdleSource::availabilityMayHaveChanged() {
    // Later, when the display too knows how it stands.
    if (noticeTimer_.isPending()) return;
    noticeTimer_.start(0, [this] {
        const bool available = isAvailable();
        if (std::exchange(toldAvailable_, available) != available && onAvailabilityChanged) {
            onAvailabilityChanged(available);
        }
    });
}

}  // namespace orvane
