#include "host/replay/trace_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "host/replay/trace_time.h"

namespace orvane::host {
namespace {

const std::string header = R"({"trace": 1, "epoch": "2026-03-02T08:00:00Z"})";

/// What is wrong with a header; empty when nothing is.
std::string headerProblem(const std::string& text) {
    std::istringstream input(text);
    const auto result = TraceReader(input).header();
    const auto* failure = std::get_if<TraceFailure>(&result);
    return failure ? failure->problem : "";
}

/// The line's action as `Action`; a line that cannot be read fails the test.
template <class Action>
Action actionOf(std::string line) {
    // Long lines are broken for the reader of the test.
    std::replace(line.begin(), line.end(), '\n', ' ');
    std::istringstream input(line);
    const auto result = TraceReader(input).next();
    const auto* read = std::get_if<TraceLine>(&result);
    if (!read) {
        ADD_FAILURE() << line << ": " << std::get<TraceFailure>(result).problem;
        return {};
    }
    return std::get<Action>(read->action);
}

std::string lineProblem(const std::string& line) {
    std::istringstream input(line);
    const auto result = TraceReader(input).next();
    const auto* failure = std::get_if<TraceFailure>(&result);
    return failure ? failure->problem : "";
}

TEST(TraceHeaders, AreReadWithTheirDefaults) {
    std::istringstream input(
        "\n  \r\n"
        R"({"trace": 1, "epoch": "2026-03-02T08:00:00.2500005Z", "timezone": "Europe/Berlin", "start": false,)"
        R"("defaults": {"b": true, "a": null, "c": {"d": [1, 2.5, "x"]}}})");
    TraceReader reader(input);
    const auto result = reader.header();
    const auto& read = std::get<TraceHeader>(result);
    EXPECT_EQ(read.epoch.count(), 1'772'438'400'250'001);
    EXPECT_EQ(read.timezone, "Europe/Berlin");
    EXPECT_FALSE(read.start);
    ASSERT_EQ(read.defaults.size(), 3u);
    EXPECT_EQ(read.defaults[0].first, "b");
    EXPECT_TRUE(read.defaults[1].second.isNone());
    EXPECT_EQ((*read.defaults[2].second.asDictionary())["d"], Value(Value::Array{1, 2.5, "x"}));
    EXPECT_EQ(reader.lineNumber(), 3u);
    EXPECT_EQ(headerProblem(header), "");
}

TEST(TraceHeaders, TellWhatIsWrong) {
    EXPECT_NE(headerProblem(""), "");
    EXPECT_NE(headerProblem(R"({"at": 0, "input": true})"), "");
    for (const char* text : {
             R"({"trace": 2, "epoch": "2026-03-02T08:00:00Z"})",
             R"({"trace": true, "epoch": "2026-03-02T08:00:00Z"})",
             R"({"trace": 1})",
             R"({"trace": 1, "epoch": 1772438400})",
             R"({"trace": 1, "epoch": "2026-02-30T08:00:00Z"})",
             R"({"trace": 1, "epoch": "2026-03-02T08:00:00Z", "at": 0})",
             R"({"trace": 1, "epoch": "2026-03-02T08:00:00Z", "trace": 1})",
             R"({"trace": 1, "epoch": "2026-03-02T08:00:00Z", "timezone": "Europe/Atlantis"})",
             R"({"trace": 1, "epoch": "2026-03-02T08:00:00Z", "timezone": "../zoneinfo/UTC"})",
             R"({"trace": 1, "epoch": "2026-03-02T08:00:00Z", "timezone": "zone.tab"})",
             R"({"trace": 1, "epoch": "2026-03-02T08:00:00Z", "start": 0})",
             R"({"trace": 1, "epoch": "2026-03-02T08:00:00Z", "defaults": []})",
         })
        EXPECT_NE(headerProblem(text), "") << text;
}

TEST(TraceTimes, EpochsAreReadToTheMicrosecondInAnyZone) {
    EXPECT_EQ(parseEpoch("1970-01-01T00:00:00Z"), TraceTime(0));
    EXPECT_EQ(parseEpoch("1969-12-31T23:59:59.5Z"), TraceTime(-500'000));
    EXPECT_EQ(parseEpoch("1970-01-01T01:30:00.000001+01:30"), TraceTime(1));
    EXPECT_EQ(parseEpoch("2024-02-29T23:59:59.9999996Z"), parseEpoch("2024-03-01T00:00:00Z"));
    for (const char* text :
         {"", "2026-03-02", "2026-03-02T08:00:00", "2026-03-02T08:00:00.Z", "2026-3-2T08:00:00Z",
          "2023-02-29T00:00:00Z", "2026-03-02T24:00:00Z", "2026-03-02T23:59:60Z", "2026-03-02T08:00:00Zx",
          "2026-03-02T08:00:00+1:00", "2026-00-02T08:00:00Z"})
        EXPECT_EQ(parseEpoch(text), std::nullopt) << text;
}

TEST(TraceLines, TimesAreTakenToTheNearestMicrosecondAndNeverRunBackwards) {
    std::istringstream input(R"({"at": 0.0000014, "input": true}
{"at": 0.000001, "input": true}
{"at": 0.0000006, "idleSeconds": -1.0000005}

{"at": 0, "input": true})");
    TraceReader reader(input);
    EXPECT_EQ(std::get<TraceLine>(reader.next()).at, TraceTime(1));
    EXPECT_EQ(std::get<TraceLine>(reader.next()).at, TraceTime(1));
    const TraceLine line = std::get<TraceLine>(reader.next());
    EXPECT_EQ(line.at, TraceTime(1));
    EXPECT_EQ(std::get<IdleAction>(line.action).sinceLastInput, TraceTime(-1'000'001));
    const auto failure = std::get<TraceFailure>(reader.next());
    EXPECT_EQ(failure.line, 5u);
    EXPECT_NE(failure.problem.find("backwards"), std::string::npos);
    EXPECT_NE(lineProblem(R"({"at": -1, "input": true})"), "");
    EXPECT_EQ(lineProblem(R"({"at": -0.0000001, "input": true})"), "");
}

TEST(TraceLines, DesktopsReplaceWhatTheyName) {
    const auto desktop =
        actionOf<DesktopAction>(R"({"at": 0, "desktop": {"frontmost": {"processIdentifier": -7},
        "windows": [{"kCGWindowName": 5, "other": {"deep": [null]}}],
        "accessibility": {"focusedWindows": {"100": {"AXTitle": "t"}, "101": {}, "102": null, "-3": {"AXTitle": null}}},
        "applications": {"a": {"path": "/p", "icon": [["FF0080ff", 1], ["00000000", 1023], ["11111111", 0]]}, "b": {}}}})");
    ASSERT_TRUE(desktop.frontmost && *desktop.frontmost);
    EXPECT_EQ((*desktop.frontmost)->processIdentifier, -7);
    EXPECT_FALSE((*desktop.frontmost)->bundleIdentifier);
    EXPECT_EQ(desktop.windows->at(0)["kCGWindowName"], Value(5));
    EXPECT_FALSE(desktop.accessibility->trusted);
    const auto& focused = desktop.accessibility->focusedWindows;
    EXPECT_EQ(focused.size(), 3u);
    EXPECT_EQ(focused.at(100).title, "t");
    EXPECT_FALSE(focused.at(101).hasTitle);
    EXPECT_TRUE(focused.at(-3).hasTitle && !focused.at(-3).title);
    const auto& pixels = desktop.applications->at("a").icon.pixels;
    ASSERT_EQ(pixels.size(), 4096u);
    EXPECT_EQ(std::vector<int>(pixels.begin(), pixels.begin() + 5), (std::vector<int>{255, 0, 128, 255, 0}));
    EXPECT_TRUE(desktop.applications->at("b").icon.pixels.empty());

    const auto nobody = actionOf<DesktopAction>(R"({"at": 0, "desktop": {"frontmost": null}})");
    EXPECT_TRUE(nobody.frontmost && !*nobody.frontmost);
    EXPECT_FALSE(nobody.windows || nobody.accessibility || nobody.applications);
}

TEST(TraceLines, EditsKeepTheOrderOfTheirKeys) {
    const auto edit = actionOf<EditAction>(
        R"({"at": 0, "edit": {"color": "00000001", "group": null, "application": "a", "resetColor": true, "save": false}})");
    EXPECT_EQ(edit.kind, EditAction::Kind::editApplication);
    EXPECT_EQ(edit.name, "a");
    EXPECT_FALSE(edit.save);
    ASSERT_EQ(edit.settings.size(), 3u);
    EXPECT_EQ(edit.settings[0].first, "color");
    EXPECT_TRUE(edit.settings[1].second.isNone());
    EXPECT_EQ(edit.settings[2].first, "resetColor");

    const auto group =
        actionOf<EditAction>(R"({"at": 0, "edit": {"group": "g", "category": null, "name": "h"}})");
    EXPECT_EQ(group.kind, EditAction::Kind::editGroup);
    EXPECT_EQ(group.settings.size(), 2u);

    const auto recording = actionOf<EditAction>(
        R"({"at": 0, "edit": {"insertRecording": {"application": null, "start": -2.5, "end": null, "window": "", "idle": false}}})");
    EXPECT_EQ(recording.recording.start, TraceTime(-2'500'000));
    EXPECT_FALSE(recording.recording.end || recording.recording.application);
    EXPECT_EQ(recording.recording.window, "");
    EXPECT_EQ(recording.recording.idle, false);
    EXPECT_TRUE(recording.save);
}

TEST(TraceLines, OtherActionsAreReadAsWritten) {
    const auto notify = actionOf<NotifyAction>(
        R"({"at": 0, "notify": "NSWorkspaceWillSleepNotification", "sender": "other", "userInfo": {"a": null, "b": 1}})");
    EXPECT_FALSE(notify.fromHost);
    EXPECT_EQ(notify.userInfo.size(), 1u);
    const auto tracker = actionOf<TrackerAction>(
        R"({"at": 0, "tracker": {"enabled": null, "idleThreshold": 1.9, "url": "/x"}})");
    ASSERT_EQ(tracker.values.size(), 3u);
    EXPECT_EQ(tracker.values[0].first, "enabled");
    EXPECT_EQ(tracker.values[1].second, Value(1.9));
    EXPECT_EQ(actionOf<CallAction>(R"({"at": 0, "call": "stop:"})"), CallAction::stop);
    EXPECT_EQ(actionOf<CurrentAction>(R"({"at": 0, "current": "delete"})"), CurrentAction::remove);
    const auto storage =
        actionOf<StorageAction>(R"({"at": 0, "storage": {"writes": "works", "open": "fails"}})");
    EXPECT_EQ(storage.open, false);
    EXPECT_EQ(storage.writes, true);
    EXPECT_EQ(storage.reads, std::nullopt);
    const auto items =
        actionOf<ItemsQuery>(R"({"at": 0, "query": "items", "from": -1, "to": 1e6, "context": "child"})");
    EXPECT_EQ(items.to.count(), 1'000'000'000'000);
    EXPECT_TRUE(items.inChildContext);
}

TEST(TraceLines, InvalidOnesAreRefused) {
    for (
        const char* text : {
            "nonsense",
            "[]",
            "{\"at\": 0, \"input\": true} {}",
            "{\"at\": 0, \"notify\": \"\xff\"}",
            R"({"at": 0})",
            R"({"input": true})",
            R"({"at": "0", "input": true})",
            R"({"at": 1e400, "input": true})",
            R"({"at": 1e13, "input": true})",
            R"({"at": 0, "input": true, "idleSeconds": 1})",
            R"({"at": 0, "input": true, "input": true})",
            R"({"at": 0, "input": false})",
            R"({"at": 0, "unknown": true})",
            R"({"at": 0, "trace": 1, "epoch": "2026-03-02T08:00:00Z"})",
            R"({"at": 0, "input": true, "sender": "host"})",
            R"({"at": 0, "idleSeconds": null})",
            R"({"at": 0, "desktop": {"screen": 1}})",
            R"({"at": 0, "desktop": {"frontmost": {"bundleIdentifier": "a"}}})",
            R"({"at": 0, "desktop": {"frontmost": {"processIdentifier": 1.5}}})",
            R"({"at": 0, "desktop": {"frontmost": {"processIdentifier": 4294967296}}})",
            R"({"at": 0, "desktop": {"frontmost": {"processIdentifier": 1, "name": "a"}}})",
            R"({"at": 0, "desktop": {"windows": [{"kCGWindowName": null}]}})",
            R"({"at": 0, "desktop": {"windows": {}}})",
            R"({"at": 0, "desktop": {"accessibility": {"trusted": 1}}})",
            R"({"at": 0, "desktop": {"accessibility": {"focusedWindows": {"x": {}}}}})",
            R"({"at": 0, "desktop": {"accessibility": {"focusedWindows": {"1": {"AXRole": "a"}}}}})",
            R"({"at": 0, "desktop": {"applications": {"a": {"icon": [["00000000", 1023]]}}}})",
            R"({"at": 0, "desktop": {"applications": {"a": {"icon": [["00000000", 1000], ["00000000", 25]]}}}})",
            R"({"at": 0, "desktop": {"applications": {"a": {"icon": [["0000000g", 1024]]}}}})",
            R"({"at": 0, "desktop": {"applications": {"a": {"icon": [["00000000", -1], ["00000000", 1025]]}}}})",
            R"({"at": 0, "desktop": {"applications": {"a": {"path": null}}}})",
            R"({"at": 0, "notify": "n", "userInfo": []})",
            R"({"at": 0, "notify": "n", "sender": "me"})",
            R"({"at": 0, "tracker": {"enabled": 1}})",
            R"({"at": 0, "tracker": {"idleTime": 1}})",
            R"({"at": 0, "call": "start"})",
            R"({"at": 0, "edit": {}})",
            R"({"at": 0, "edit": {"save": false}})",
            R"({"at": 0, "edit": {"insertGroup": "a", "name": "b"}})",
            R"({"at": 0, "edit": {"application": "a", "insertGroup": "b"}})",
            R"({"at": 0, "edit": {"application": "a", "category": "b"}})",
            R"({"at": 0, "edit": {"application": "a", "disabled": "yes"}})",
            R"({"at": 0, "edit": {"group": "a", "resetColor": true}})",
            R"({"at": 0, "edit": {"insertRecording": {"start": "now"}}})",
            R"({"at": 0, "edit": {"insertRecording": {"start": 0, "name": "a"}}})",
            R"({"at": 0, "storage": {"reads": true}})",
            R"({"at": 0, "current": "save"})",
            R"({"at": 0, "query": "items", "from": 0})",
            R"({"at": 0, "query": "items", "from": 0, "to": 1, "context": "main"})",
            R"({"at": 0, "query": "presence", "date": "today"})",
            R"({"at": 0, "query": "state", "date": 0})",
        })
        EXPECT_NE(lineProblem(text), "") << text;
    EXPECT_NE(lineProblem(R"({"at": 0, "notify": "n", "userInfo": {"a": )" + std::string(300, '[') +
                          std::string(300, ']') + "}}"),
              "");
}

TEST(TraceLines, OnlySomeWorkBeforeThereIsATracker) {
    EXPECT_TRUE(worksWithoutTracker(CallAction::sharedOrvane));
    EXPECT_FALSE(worksWithoutTracker(CallAction::poll));
    EXPECT_TRUE(worksWithoutTracker(PresenceQuery{}));
    EXPECT_FALSE(worksWithoutTracker(DumpQuery{}));
    EXPECT_TRUE(worksWithoutTracker(StorageAction{}));
    EXPECT_FALSE(worksWithoutTracker(CurrentAction::reset));
}

}  // namespace
}  // namespace orvane::host
