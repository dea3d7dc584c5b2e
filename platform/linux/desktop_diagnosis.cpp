#include "platform/linux/desktop_diagnosis.h"

#include <cstdlib>
#include <utility>

#include "platform/linux/desktop_choice.h"
#include "platform/linux/linux_workspace.h"
#include "platform/linux/session/session_monitor.h"

namespace orvane {

namespace {

/// The first shortcoming says what is wrong; where there is none, `otherwise` does. Before the desktop has
/// answered, neither is known.
void explain(ServiceHealth& health, const DesktopChoice& desktop,
             const std::vector<Shortcoming>& shortcomings, std::string otherwise) {
    if (!health.isGood && !desktop.isDecided()) {
        health.problem = "the desktop has not answered yet: ask again in some seconds";
    } else if (!shortcomings.empty()) {
        health.problem = shortcomings.front().problem;
        health.remedy = shortcomings.front().remedy;
    } else if (!health.isGood) {
        health.problem = std::move(otherwise);
    }
}

bool hasVariable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0';
}

ServiceHealth windowHealth(DesktopChoice& desktop, LinuxWorkspace& workspace) {
    ServiceHealth health{"windows", desktop.isAvailable(), {}, {}, {}, {}};
    if (health.isGood) {
        health.backend = desktop.name();
        const auto front = workspace.frontmostApplication();
        const auto active = desktop.activeWindow();
        health.sees = std::to_string(desktop.windows().size()) + " on screen, in front ";
        health.sees += front ? front->bundleIdentifier.value_or("an unknown application") : "nothing";
        if (front && front->processIdentifier != 0) {
            health.sees += " (process " + std::to_string(front->processIdentifier) + ")";
        }
        // Behind a lock there still is a window.
        const bool isLocked = front && front->bundleIdentifier == loginWindowIdentifier;
        if (front && !isLocked && active && active->title) health.sees += ": " + *active->title;
    }
    const bool isTold = hasVariable("DISPLAY") || hasVariable("WAYLAND_DISPLAY");
    explain(health, desktop, desktop.windowShortcomings(),
            desktop.compositorAnswers()
                ? "this desktop tells its windows in no way that is known: nothing is recorded"
            : isTold ? "the display server does not answer: check DISPLAY and WAYLAND_DISPLAY"
                     : "no display server: start this within a desktop session, or set DISPLAY");
    return health;
}

ServiceHealth idleHealth(DesktopChoice& desktop) {
    const auto seconds = desktop.idleSeconds();
    ServiceHealth health{"idle time", seconds.has_value(), {}, {}, {}, {}};
    if (seconds) {
        const auto* source = desktop.idleSourceInUse();
        health.backend = source != nullptr ? source->name() : desktop.name();
        health.sees = "last input " + std::to_string(static_cast<long long>(*seconds)) + " s ago";
    }
    explain(health, desktop, desktop.idleShortcomings(),
            "the desktop does not tell when something was touched: nobody ever counts as idle");
    return health;
}

ServiceHealth screenHealth(DesktopChoice& desktop) {
    const auto* source = desktop.screenPowerInUse();
    const bool knowsItself = desktop.backendInUse() != nullptr && desktop.backendInUse()->tellsScreenSleep();
    ServiceHealth health{"screen power", source != nullptr || knowsItself, {}, {}, {}, {}};
    if (health.isGood) {
        health.backend = source != nullptr ? source->name() : desktop.name();
        health.sees = desktop.areScreensOff() ? "off" : "on";
    }
    explain(health, desktop, desktop.screenPowerShortcomings(),
            "the desktop does not tell when screens go off: that alone ends no recording");
    return health;
}

}  // namespace

std::vector<ServiceHealth> diagnoseDesktop(DesktopChoice& desktop, LinuxWorkspace& workspace,
                                           const SessionMonitor& session) {
    std::vector<ServiceHealth> result{windowHealth(desktop, workspace), idleHealth(desktop),
                                      screenHealth(desktop)};
    for (auto& service : session.status()) {
        ServiceHealth health{service.name, service.isAvailable, {}, {}, {}, {}};
        if (service.isAvailable) {
            health.backend = std::move(service.backend);
            health.sees = std::move(service.detail);
        } else {
            health.problem = std::move(service.detail);
        }
        result.push_back(std::move(health));
    }
    return result;
}

std::vector<ServiceHealth> withoutSights(std::vector<ServiceHealth> health) {
    for (auto& service : health) service.sees.clear();
    return health;
}

}  // namespace orvane
