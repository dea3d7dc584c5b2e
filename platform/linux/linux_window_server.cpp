#include "platform/linux/linux_window_server.h"

#include <algorithm>
#include <utility>

namespace orvane {

LinuxWindowServer::LinuxWindowServer(ApplicationDirectory& directory) : directory_(directory) {}

void LinuxWindowServer::setBackend(DesktopBackend* backend) {
    backend_ = backend;
    snapshot_.clear();
}

std::vector<WindowIdentifier> LinuxWindowServer::windowListCreate(std::uint32_t /*options*/,
                                                                  WindowIdentifier referenceWindow) {
    snapshot_.clear();
    if (backend_) snapshot_ = backend_->windows();
    std::vector<WindowIdentifier> numbers;
    for (const auto& window : snapshot_) {
        if (referenceWindow == kCGNullWindowID || referenceWindow == window.number)
            numbers.push_back(window.number);
    }
    return numbers;
}

std::vector<Dictionary> LinuxWindowServer::windowListCreateDescriptionFromArray(
    std::span<const WindowIdentifier> windows) {
    // Used once only: identifiers that come later are held against the windows of that time.
    auto known = std::exchange(snapshot_, {});
    if (known.empty() && backend_ && !windows.empty()) known = backend_->windows();
    std::vector<Dictionary> descriptions;
    for (const WindowIdentifier number : windows) {
        const auto found = std::find_if(known.begin(), known.end(),
                                        [=](const auto& window) { return window.number == number; });
        if (found != known.end()) descriptions.push_back(describe(*found));
    }
    return descriptions;
}

Dictionary LinuxWindowServer::describe(const DesktopWindow& window) {
    Dictionary description;
    description.set(kCGWindowNumber, window.number);
    description.set(kCGWindowOwnerPID, std::int64_t{window.processIdentifier});
    description.set(kCGWindowLayer, std::int64_t{window.layer});
    description.set(kCGWindowName, window.title);
    description.set(kCGWindowOwnerName, directory_.ownerName(window));
    return description;
}

double LinuxWindowServer::secondsSinceLastEventType(std::int32_t, std::uint32_t) {
    const auto idle = backend_ ? backend_->idleSeconds() : std::nullopt;
    return idle.value_or(0);
}

}  // namespace orvane
