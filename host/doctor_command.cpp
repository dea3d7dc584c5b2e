#include <glib.h>

#include <iostream>
#include <nlohmann/json.hpp>

#include "host/command.h"
#include "host/reading_platform.h"
#include "host/terminal.h"
#include "platform/linux/desktop_choice.h"
#include "platform/linux/error_presenter.h"
#include "platform/linux/linux_platform.h"
#include "platform/linux/session/session_monitor.h"

namespace orvane::host {

namespace {

/// Lets the desktop and the buses answer, for some seconds at the most.
void waitForAnswers(LinuxPlatform& platform) {
    // KWin first reads the whole file of a program that has its permission, which takes two seconds for one
    // of 100 MB.
    constexpr guint longestWait = 10'000;  // milliseconds
    bool late = false;
    const guint timer = g_timeout_add(
        longestWait,
        +[](gpointer flag) -> gboolean {
            *static_cast<bool*>(flag) = true;
            return G_SOURCE_CONTINUE;
        },
        &late);
    const auto& session = platform.session();
    const auto& desktop = platform.desktop();
    while (!(session.isDecided() && desktop.isDecided()) && !late) g_main_context_iteration(nullptr, TRUE);
    g_source_remove(timer);
}

void examineSettings(LinuxPlatform& platform, std::vector<ServiceHealth>& findings) {
    const Value enabled = platform.userDefaults().objectForKey(orvaneEnabledDefault);
    ServiceHealth settings{"settings", enabled.boolValue(), platform.userDefaults().path().string(), {}, {},
                           {}};
    if (const std::string& problem = platform.userDefaults().problem(); !problem.empty()) {
        settings.isGood = false;
        settings.problem = problem + ": mend the file or move it away";
    } else if (settings.isGood) {
        settings.sees = "tracking is on";
    } else {
        settings.problem = enabled.isNone() ? "tracking was never switched on" : "tracking is off";
        settings.remedy = "orvane enable";
    }
    findings.push_back(std::move(settings));
    Error error;
    if (!TitleRules::read(platform.userDefaults().objectForKey(orvaneTitleRulesDefault), &error))
        findings.push_back({"title rules",
                            false,
                            platform.userDefaults().path().string(),
                            {},
                            error.localizedDescription() + " Until that is mended, no title is recorded",
                            {}});
}

void examineStore(const std::optional<std::filesystem::path>& folder, std::vector<ServiceHealth>& findings) {
    OpenStore store(folder);
    const std::string path =
        (folder.value_or(store.tracker().applicationFilesDirectory()) / "Orvaning.db").string();
    if (!store.exists()) {
        findings.push_back({"store", true, path, "not made yet", {}, {}});
        return;
    }
    std::string problem;
    setErrorPresenter([&](const Error& error) {
        // The first one tells why; what follows from it says no more.
        if (problem.empty()) problem = error.localizedDescription();
    });
    const bool opens = store.context() != nullptr;
    setErrorPresenter(nullptr);
    findings.push_back({"store", opens, path, opens ? "opens" : "", problem, {}});
}

void print(const ServiceHealth& finding) {
    std::cout << (finding.isGood ? "ok       " : "missing  ") << finding.service;
    if (!finding.backend.empty()) std::cout << " [" << finding.backend << ']';
    // Titles are what any web page likes them to be.
    if (!finding.sees.empty()) std::cout << ": " << displayText(finding.sees, finding.sees.size());
    if (!finding.problem.empty()) {
        // Something can work and yet work better.
        std::cout << (finding.isGood ? "\n         but " : ": ") << finding.problem;
        if (!finding.remedy.empty()) std::cout << "\n         mend it with: " << finding.remedy;
    }
    std::cout << '\n';
}

}  // namespace

int runDoctor(const CommonOptions& options) {
    std::vector<ServiceHealth> findings;
    {
        LinuxPlatform platform;
        waitForAnswers(platform);
        findings = platform.desktopHealth();
        examineSettings(platform, findings);
    }
    examineStore(options.store, findings);

    bool allGood = true;
    auto list = nlohmann::ordered_json::array();
    for (const ServiceHealth& finding : findings) {
        allGood = allGood && finding.isGood;
        list.push_back({{"subject", finding.service},
                        {"good", finding.isGood},
                        {"backend", finding.backend},
                        {"sees", finding.sees},
                        {"problem", finding.problem},
                        {"remedy", finding.remedy}});
        if (!options.json) print(finding);
    }
    if (options.json) std::cout << list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
    return allGood ? exitSuccess : exitFailure;
}

}  // namespace orvane::host
