#include "platform/simulated/virtual_run_loop.h"

#include <cmath>
#include <limits>

namespace orvane {

namespace {

std::int64_t dueTime(std::int64_t now, double delay) {
    constexpr std::int64_t latest = std::numeric_limits<std::int64_t>::max();
    if (!(delay > 0)) return now;
    const double microseconds = std::round(delay * 1e6);
    // Comparing in double precision keeps the conversion below within the type.
    if (microseconds >= static_cast<double>(latest - now)) return latest;
    return now + static_cast<std::int64_t>(microseconds);
}

}  // namespace

void VirtualRunLoop::performSelector(const void* target, std::string_view selector, double delay,
                                     std::function<void()> action) {
    requests_.emplace(Order(dueTime(clock_.time().count(), delay), made_++),
                      Request{target, std::string(selector), std::move(action)});
}

void VirtualRunLoop::cancelPreviousPerformRequests(const void* target) {
    std::erase_if(requests_, [&](const auto& entry) { return entry.second.target == target; });
}

void VirtualRunLoop::cancelPreviousPerformRequests(const void* target, std::string_view selector) {
    std::erase_if(requests_, [&](const auto& entry) {
        return entry.second.target == target && entry.second.selector == selector;
    });
}

std::size_t VirtualRunLoop::pendingRequestCount(const void* target) const {
    std::size_t count = 0;
    for (const auto& [order, request] : requests_)
        if (request.target == target) ++count;
    return count;
}

void VirtualRunLoop::advanceTo(Time time) {
    while (!requests_.empty() && requests_.begin()->first.first <= time.count()) {
        // Taken out first: the action may cancel, make and even run requests itself.
        auto request = requests_.extract(requests_.begin());
        clock_.moveTo(Time(request.key().first));
        request.mapped().action();
    }
    clock_.moveTo(time);
}

}  // namespace orvane
