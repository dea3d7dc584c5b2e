#include "random_trace.h"

#include <cmath>
#include <random>

namespace orvane::host {

namespace {

constexpr const char* groups[] = {"Work", "Play", "Rest"};

class Maker {
  public:
    Maker(std::uint32_t seed, const RandomTraceOptions& options) : random_(seed), options_(options) {}

    std::vector<Json> make() {
        lines_.push_back({{"trace", 1},
                          {"epoch", "2026-03-28T20:00:00.250Z"},
                          {"timezone", pick<const char*>({"UTC", "Europe/Berlin", "Pacific/Auckland"})},
                          {"defaults", {{"OrvaneEnabled", true}}}});
        if (options_.hostEdits) meetAll();
        for (std::size_t event = 1; event <= options_.events; ++event) {
            passTime();
            if (chance(options_.hostEdits ? 15 : 0))
                edit();
            else if (chance(options_.clockSteps ? 3 : 0))
                add({{"clockStep", pick<double>({-3600, -0.5, 0.25, 7200})}});
            else if (chance(options_.storageFailures ? 8 : 0))
                add({{"storage",
                      {{pick<const char*>({"open", "reads", "writes"}),
                        pick<const char*>({"works", "works", "fails"})}}}});
            else if (chance(options_.lostRecordings ? 5 : 0))
                add({{"current", pick<const char*>({"refresh", "delete", "reset"})}});
            else
                use();
            add({{"query", "state"}});
            if (event % (options_.events / 20) == 0) lookAtAll();
        }
        return std::move(lines_);
    }

  private:
    bool chance(int percent) { return std::uniform_int_distribution<>(0, 99)(random_) < percent; }
    int upTo(int most) { return std::uniform_int_distribution<>(0, most)(random_); }
    template <class T>
    T pick(std::initializer_list<T> choices) {
        return choices.begin()[upTo(static_cast<int>(choices.size()) - 1)];
    }

    void add(Json line) {
        line["at"] = at_;
        lines_.push_back(std::move(line));
    }
    double pause() {
        if (!options_.longPauses) return 5;
        return chance(10) ? 5000 : 130;
    }
    void passTime() {
        if (chance(20)) return;
        at_ += pick<double>({0.125, 1, 3, 9.5, 10, 10.000001, 25, 60, pause(), 0.999999});
        at_ = std::round(at_ * 1e6) / 1e6;
    }

    /// What the user and the desktop do.
    void use() {
        const int what = upTo(99);
        if (what < 35)
            show();
        else if (what < 60)
            activate();
        else if (what < 72)
            add({{"input", true}});
        else if (what < 76)
            add({{"idleSeconds", pick<double>({0, 119, 120, 120.5, 4000})}});
        else if (what < 84)
            add({{"notify",
                  pick<const char*>(
                      {"NSWorkspaceScreensDidSleepNotification", "NSWorkspaceWillSleepNotification",
                       "NSApplicationWillTerminateNotification", "NSWorkspaceDidWakeNotification"})}});
        else if (what < 90)
            add({{"defaults", {{"OrvaneEnabled", pick<Json>({true, true, false, nullptr})}}}});
        else if (what < 93)
            add({{"tracker", {{"idleThreshold", pick<Json>({0, 1.9, 2, 5, nullptr})}}}});
        else if (what < 95)
            add({{"tracker", {{"enabled", pick<Json>({true, true, false, nullptr})}}}});
        else
            add({{"call", pick<const char*>({"start:", "stop:", "poll"})}});
    }

    void show() {
        const int application = upTo(4);
        Json desktop;
        desktop["frontmost"] = {{"processIdentifier", 100 + application}};
        if (!chance(5)) desktop["frontmost"]["bundleIdentifier"] = identifier(application);
        if (chance(3)) desktop["frontmost"] = nullptr;
        desktop["windows"] = Json::array();
        for (int windows = upTo(3); windows > 0; --windows) {
            Json window = {{"kCGWindowOwnerPID", 100 + (chance(80) ? application : upTo(4))},
                           {"kCGWindowLayer", chance(85) ? 0 : 25},
                           {"kCGWindowOwnerName", "Application"}};
            if (!chance(8))
                window["kCGWindowName"] = pick<const char*>({"", "letter", "Letter", "plan", "Übersicht"});
            desktop["windows"].push_back(std::move(window));
        }
        if (chance(10))
            desktop["accessibility"] = {{"trusted", chance(70)},
                                        {"focusedWindows",
                                         {{"100", {{"AXTitle", "focused"}}},
                                          {"101", Json::object()},
                                          {"102", {{"AXTitle", nullptr}}}}}};
        add({{"desktop", std::move(desktop)}});
        if (chance(50)) activate();
    }
    void activate() { add({{"notify", "NSWorkspaceDidActivateApplicationNotification"}}); }

    static const char* identifier(int application) {
        static constexpr const char* identifiers[] = {"org.example.Editor", "org.example.Mail", "terminal",
                                                      "com.apple.loginwindow", ""};
        return identifiers[application];
    }

    /// Makes the groups and applications that edits name later, while everything works.
    void meetAll() {
        for (const char* group : groups) add({{"edit", {{"insertGroup", group}}}});
        for (int application = 0; application < 3; ++application) {
            add({{"desktop",
                  {{"frontmost",
                    {{"processIdentifier", 100 + application},
                     {"bundleIdentifier", identifier(application)}}},
                   {"windows",
                    {{{"kCGWindowOwnerPID", 100 + application},
                      {"kCGWindowLayer", 0},
                      {"kCGWindowName", "first"}}}}}}});
            add({{"call", "poll"}});
        }
    }

    void edit() {
        const char* group = groups[upTo(2)];
        Json edit;
        switch (upTo(4)) {
            case 0:
                edit = {{"insertGroup", group}, {"disabled", pick<Json>({true, false, nullptr})}};
                break;
            case 1:
                edit = {{"group", group}, {"category", "c"}, {"color", pick<Json>({"336699ff", nullptr})}};
                break;
            case 2:
                edit = {{"application", identifier(upTo(2))}, {"group", pick<Json>({group, group, nullptr})}};
                break;
            case 3:
                edit = {{"application", identifier(upTo(2))},
                        {"disabled", pick<Json>({true, false, nullptr})}};
                break;
            default: {
                const double length = pick<double>({0, 60, 3600.25, 90000});
                edit = {{"insertRecording",
                         {{"application", pick<Json>({identifier(upTo(2)), nullptr})},
                          {"start", at_ - length},
                          {"end", pick<Json>({at_, at_, nullptr})},
                          {"window", hostWindow + std::string(group)},
                          {"idle", pick<Json>({true, false, false, nullptr})}}}};
            }
        }
        if (options_.lostRecordings && chance(30)) edit["save"] = false;
        add({{"edit", std::move(edit)}});
    }

    void lookAtAll() {
        add({{"query", "dump"}});
        Json items = {{"query", "items"}, {"from", -1e6}, {"to", at_ + 1e6}};
        if (chance(30)) items["context"] = "child";
        add(std::move(items));
        add({{"query", "presence"}, {"date", at_ - upTo(3) * 86400.}});
    }

    std::mt19937 random_;
    RandomTraceOptions options_;
    std::vector<Json> lines_;
    double at_ = 0;
};

}  // namespace

std::vector<Json> randomTrace(std::uint32_t seed, const RandomTraceOptions& options) {
    return Maker(seed, options).make();
}

std::string traceText(const std::vector<Json>& lines) {
    std::string text;
    for (const Json& line : lines) text += line.dump() + '\n';
    return text;
}

}  // namespace orvane::host
