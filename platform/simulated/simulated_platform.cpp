#include "platform/simulated/simulated_platform.h"

namespace orvane {

SimulatedPlatform::SimulatedPlatform() : runLoop_(clock_), windowServer_(clock_), fileManager_(workspace_) {}
SimulatedPlatform::~SimulatedPlatform() = default;

std::vector<ServiceHealth> SimulatedPlatform::desktopHealth() {
    const auto front = workspace_.frontmostApplication();
    const auto windows = windowServer_.windowListCreate(kCGWindowListOptionOnScreenOnly, kCGNullWindowID);
    const auto idle = windowServer_.secondsSinceLastEventType(kCGEventSourceStateCombinedSessionState,
                                                              kCGAnyInputEventType);
    const std::string name = front ? front->bundleIdentifier.value_or("an unknown application") : "nothing";
    return {{"windows",
             true,
             "simulated",
             std::to_string(windows.size()) + " on screen, in front " + name,
             {},
             {}},
            {"idle time",
             true,
             "simulated",
             "last input " + std::to_string(static_cast<long long>(idle)) + " s ago",
             {},
             {}}};
}

}  // namespace orvane
