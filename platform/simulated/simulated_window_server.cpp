#include "platform/simulated/simulated_window_server.h"

#include <algorithm>
#include <set>

namespace orvane {

std::vector<WindowIdentifier> SimulatedWindowServer::windowListCreate(std::uint32_t, WindowIdentifier) {
    std::vector<WindowIdentifier> result;
    for (const Window& window : windows_) result.push_back(window.identifier);
    return result;
}

std::vector<Dictionary> SimulatedWindowServer::windowListCreateDescriptionFromArray(
    std::span<const WindowIdentifier> windows) {
    std::vector<Dictionary> result;
    for (const WindowIdentifier identifier : windows) {
        const auto found = std::find_if(windows_.begin(), windows_.end(), [&](const Window& window) {
            return window.identifier == identifier;
        });
        if (found != windows_.end()) result.push_back(found->description);
    }
    return result;
}

double SimulatedWindowServer::secondsSinceLastEventType(std::int32_t, std::uint32_t) {
    return static_cast<double>((clock_.time() - lastInput_).count()) / 1e6;
}

void SimulatedWindowServer::setWindows(std::vector<Dictionary> descriptions) {
    std::set<WindowIdentifier> given;
    for (const Dictionary& description : descriptions)
        if (const Value number = description[kCGWindowNumber]; number.asInteger())
            given.insert(*number.asInteger());

    windows_.clear();
    WindowIdentifier next = 1;
    std::set<WindowIdentifier> used;
    for (Dictionary& description : descriptions) {
        const Value number = description[kCGWindowNumber];
        // A number that is no whole number, or that an earlier window has, cannot tell the window from
        // others.
        if (number.asInteger() && used.insert(*number.asInteger()).second) {
            windows_.push_back({*number.asInteger(), std::move(description)});
            continue;
        }
        while (given.contains(next)) ++next;
        const WindowIdentifier identifier = next++;
        if (number.isNone()) description.set(kCGWindowNumber, identifier);
        windows_.push_back({identifier, std::move(description)});
    }
}

}  // namespace orvane
