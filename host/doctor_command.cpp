#include <glib.h>

#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>

#include "host/command.h"
#include "host/reading_platform.h"
#include "platform/linux/desktop_choice.h"
#include "platform/linux/error_presenter.h"
#include "platform/linux/linux_platform.h"
#include "platform/linux/session/session_monitor.h"

namespace orvane::host {

namespace {

/// One line of the diagnosis: what was looked at, whether it is as it should be, and what there is to know or
/// to do.
struct Finding {
    std::string subject;
    bool isGood;
    std::string detail;
};

/// Lets the buses answer, for a moment at the most.
void waitForSession(const SessionMonitor& session) {
    constexpr guint longestWait = 1500;  // milliseconds
    bool late = false;
    const guint timer = g_timeout_add(
        longestWait,
        +[](gpointer flag) -> gboolean {
            *static_cast<bool*>(flag) = true;
            return G_SOURCE_CONTINUE;
        },
        &late);
    while (!session.isDecided() && !late) g_main_context_iteration(nullptr, TRUE);
    g_source_remove(timer);
}

void examineDesktop(LinuxPlatform& platform, std::vector<Finding>& findings) {
    DesktopChoice& desktop = platform.desktop();
    if (!desktop.isAvailable()) {
        findings.push_back({"display", false,
                            std::getenv("DISPLAY")
                                ? "the display server does not answer: check DISPLAY"
                                : "no display server: start this within a desktop session, or set "
                                  "DISPLAY"});
        return;
    }
    findings.push_back({"display", true, desktop.name()});
    const auto frontmost = platform.workspace().frontmostApplication();
    findings.push_back({"frontmost application", true,
                        frontmost ? frontmost->bundleIdentifier.value_or("unknown") + " (process " +
                                        std::to_string(frontmost->processIdentifier) + ")"
                                  : "none at present"});
    findings.push_back({"windows", true, std::to_string(desktop.windows().size()) + " on screen"});
    const auto idle = desktop.idleSeconds();
    findings.push_back({"idle time", idle.has_value(),
                        idle ? std::to_string(static_cast<long long>(*idle)) + " seconds since the last input"
                             : "the display server does not tell: its screen-saver extension is missing"});
}

void examineSettings(LinuxPlatform& platform, std::vector<Finding>& findings) {
    const std::string path = platform.userDefaults().path().string();
    const Value enabled = platform.userDefaults().objectForKey(orvaneEnabledDefault);
    if (const std::string& problem = platform.userDefaults().problem(); !problem.empty())
        findings.push_back({"settings", false, path + ": " + problem + ": mend the file or move it away"});
    else if (enabled.isNone())
        findings.push_back({"settings", false, path + ": tracking was never switched on: `orvane enable`"});
    else
        findings.push_back(
            {"settings", enabled.boolValue(),
             path + (enabled.boolValue() ? ": tracking is on" : ": tracking is off: `orvane enable`")});
}

void examineStore(const std::optional<std::filesystem::path>& folder, std::vector<Finding>& findings) {
    OpenStore store(folder);
    const std::string path =
        (folder.value_or(store.tracker().applicationFilesDirectory()) / "Orvaning.db").string();
    if (!store.exists()) {
        findings.push_back({"store", true, path + ": not made yet"});
        return;
    }
    std::string problem;
    setErrorPresenter([&](const Error& error) {
        // The first one tells why; what follows from it says no more.
        if (problem.empty()) problem = error.localizedDescription();
    });
    const bool opens = store.context() != nullptr;
    setErrorPresenter(nullptr);
    findings.push_back({"store", opens, opens ? path : problem});
}

}  // namespace

int runDoctor(const CommonOptions& options) {
    std::vector<Finding> findings;
    {
        LinuxPlatform platform;
        examineDesktop(platform, findings);
        waitForSession(platform.session());
        for (const SessionService& service : platform.session().status())
            findings.push_back({service.name, service.isAvailable, service.detail});
        examineSettings(platform, findings);
    }
    examineStore(options.store, findings);

    bool allGood = true;
    auto list = nlohmann::ordered_json::array();
    for (const Finding& finding : findings) {
        allGood = allGood && finding.isGood;
        list.push_back({{"subject", finding.subject}, {"good", finding.isGood}, {"detail", finding.detail}});
        if (!options.json)
            std::cout << (finding.isGood ? "ok       " : "missing  ") << finding.subject
                      << (finding.detail.empty() ? "" : ": ") << finding.detail << '\n';
    }
    if (options.json) std::cout << list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
    return allGood ? exitSuccess : exitFailure;
}

}  // namespace orvane::host
