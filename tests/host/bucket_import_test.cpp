#include <nlohmann/json.hpp>
#include <random>

#include "tests/host/exchange_fixture.h"

namespace orvane::test {
namespace {

using nlohmann::ordered_json;

/// An event some seconds after the beginning of the epoch.
ordered_json event(double start, double duration, ordered_json data) {
    char timestamp[64];
    const int whole = static_cast<int>(start);
    std::snprintf(timestamp, sizeof timestamp, "1970-01-01T%02d:%02d:%02d.%06d+00:00", whole / 3600,
                  whole / 60 % 60, whole % 60, static_cast<int>((start - whole) * 1e6 + 0.5));
    return {{"id", 1}, {"timestamp", timestamp}, {"duration", duration}, {"data", std::move(data)}};
}

ordered_json window(double start, double duration, const char* title, const char* app = "editor") {
    return event(start, duration, {{"app", app}, {"title", title}});
}

ordered_json presence(double start, double duration, const char* status) {
    return event(start, duration, {{"status", status}});
}

ordered_json bucket(const char* type, ordered_json events, const char* host = "desk") {
    return {{"id", "x"}, {"type", type}, {"hostname", host}, {"events", std::move(events)}};
}

class BucketImport : public ExchangeFixture {
  protected:
    host::ImportReport import(const ordered_json& buckets) {
        return store_.importText(ordered_json{{"buckets", buckets}}.dump(), ".json");
    }

    ExchangeStore store_{folder_ / "store"};
};

TEST_F(BucketImport, SplitsEventsWhereTheUserWasAway) {
    const ordered_json buckets{
        {"windows",
         bucket("currentwindow", {window(300, 50, "c"), window(200, 100, "b"), window(100, 100, "a")})},
        // Overlapping, out of order, and reaching over two events.
        {"presence", bucket("afkstatus", {presence(340, 100, "afk"), presence(120, 10.5, "afk"),
                                          presence(125, 15, "afk"), presence(140, 40, "not-afk"),
                                          presence(190, 20, "afk"), presence(250, 0, "afk")})},
        // Another computer: its presence does not count here, its windows have none.
        {"else", bucket("currentwindow", {window(500, 10, "other desk")}, "lap")},
        {"elsewhere", bucket("afkstatus", {presence(0, 400, "afk")}, "lap")}};
    const auto report = import(buckets);
    EXPECT_EQ(store_.summary(),
              "100-120 a (120-140 a) 140-190 a (190-200 a) (200-210 b) 210-300 b 300-340 c (340-350 c) "
              "500-510 other desk");
    EXPECT_EQ(report.taken, 9U);
    EXPECT_EQ(report.newApplications, 1U);
    EXPECT_EQ(store_.items(), (std::vector<std::string>{"[<editor><editor>---]9"}));

    const auto again = import(buckets);
    EXPECT_EQ(again.taken, 0U);
    EXPECT_EQ(again.alreadyStored, 9U);
}

TEST_F(BucketImport, MergesWhatFollowsAndCountsNoTimeTwice) {
    const auto report =
        import({{"windows",
                 bucket("currentwindow", {window(100, 10, "a"), window(110, 10, "a"), window(120, 5.5, "a"),
                                          window(125.5, 4.5, "b"), window(131, 9, "b"),  // after a gap
                                          window(135, 10, "c"), window(136, 2, "inner"), window(100, 10, "a"),
                                          window(150, 10, "d", "other"), window(160, 10, "d")})}});
    EXPECT_EQ(store_.summary(), "100-125.5 a 125.5-130 b 131-140 b 140-145 c 150-160 d 160-170 d");
    EXPECT_EQ(report.taken, 6U);
    EXPECT_EQ(report.merged, 2U);
    EXPECT_EQ(report.coveredWithin, 2U);
}

TEST_F(BucketImport, TakesTheRestOfWhatIsStored) {
    const auto app = store_.insertApp("editor", "Editor");
    store_.insertRecording(app, 110, 120, false, "tracked");
    store_.insertRecording(app, 130, 140, true, "tracked");
    store_.save();
    const ordered_json buckets{{"windows", bucket("currentwindow", {window(100, 50, "a"), window(111, 5, "b"),
                                                                    window(131, 2, "c")})}};
    const auto report = import(buckets);
    EXPECT_EQ(store_.summary(), "100-110 a 110-120 tracked 120-130 a (130-140 tracked) 140-150 a");
    EXPECT_EQ(report.taken, 3U);
    EXPECT_EQ(report.takenInPart, 1U);
    const auto again = import(buckets);
    EXPECT_EQ(again.taken, 0U);
    EXPECT_EQ(again.overlapping, 1U);

    // A later export of the same computer holds the last event in its full length.
    import({{ "windows", bucket("currentwindow", {window(100, 65.25, "a")}) }});
    EXPECT_EQ(store_.summary(),
              "100-110 a 110-120 tracked 120-130 a (130-140 tracked) 140-150 a 150-165.25 a");
}

TEST_F(BucketImport, FindsApplicationsByIdentifierOrName) {
    store_.insertApp("org.example.Editor", "Editor");
    store_.insertApp("org.one.Mail", "Mail");
    store_.insertApp("org.two.Mail", "Mail");
    store_.insertApp("term", "Terminal");
    store_.save();
    desktop().workspace().setApplications({{"chat", {"/apps/chat", "/apps/chat", "Chat", {}}}});
    import(
        {{ "windows",
           bucket("currentwindow", {window(0, 1, "", "editor"), window(1, 1, "", "mail"),
                                    window(2, 1, "", "TERM"), window(3, 1, "", "chat")}) }});
    EXPECT_EQ(store_.items(),
              (std::vector<std::string>{"[<chat><Chat>---]1", "[<mail><mail>---]1",
                                        "[<org.example.Editor><Editor>---]1", "[<org.one.Mail><Mail>---]0",
                                        "[<org.two.Mail><Mail>---]0", "[<term><Terminal>---]1"}));
}

TEST_F(BucketImport, LeavesOutWhatMakesNoSenseAndTellsWhy) {
    ordered_json badDate = window(0, 1, "x");
    badDate["timestamp"] = "1970-02-30T00:00:00Z";
    ordered_json noDate = window(0, 1, "x");
    noDate.erase("timestamp");
    ordered_json badDuration = window(0, 1, "x");
    badDuration["duration"] = "1";
    const auto report = import(
        {{"windows",
          bucket("currentwindow",
                 {badDate, noDate, badDuration, window(0, 1e12, "x"), 7, nullptr,
                  event(0, 1, {{"title", "no app"}}), event(0, 1, {{"app", "editor"}, {"title", {1, 2}}}),
                  event(0, 1, "no data"), event(0, 1, {{"app", 7}}), window(10, 0, "x"), window(20, -5, "x"),
                  window(30, 5, "good"), event(40, 5, {{"app", "editor"}, {"extra", {{"app", "nested"}}}})})},
         {"presence", bucket("afkstatus", {presence(0, 100, "asleep"), event(31, 1, {{"status", true}})})},
         {"web", bucket("web.tab.current", {window(0, 5, "x"), event(0, 1, {{"title", 1}})})},
         {"untyped", {{"events", {window(0, 5, "x")}}}}});
    EXPECT_EQ(store_.summary(), "30-35 good 40-45 -");
    EXPECT_EQ(report.malformed, 12U);
    EXPECT_EQ(report.firstMalformed, "line 1: \"timestamp\" is not a date as in \"2026-03-02T08:00:00Z\"");
    EXPECT_EQ(report.zeroDuration, 1U);
    EXPECT_EQ(report.negativeDuration, 1U);
    EXPECT_EQ(report.otherKinds, (std::map<std::string, std::size_t>{{"", 1}, {"web.tab.current", 2}}));
}

TEST_F(BucketImport, ReadsTheFileOfASingleBucketInAnyOrderOfMembers) {
    store_.importText(R"({"events": [{"data": {"title": "t", "app": "a"}, "duration": 2,
                          "timestamp": "1970-01-01T01:00:10+01:00"}], "type": "currentwindow"})",
                      ".json");
    EXPECT_EQ(store_.summary(), "10-12 t");
}

TEST_F(BucketImport, AgreesWithACountOfEverySecond) {
    std::mt19937 random(11);
    const auto pick = [&](unsigned count) { return static_cast<int>(random() % count); };
    constexpr int seconds = 2000;
    // What each second is to hold: the title of the event that began first, in brackets while away.
    std::vector<std::string> expected(seconds);
    std::vector<bool> stored(seconds);
    std::vector<bool> away(seconds);
    const auto app = store_.insertApp("editor");
    for (int i = 0; i < 20; ++i) {
        const int start = pick(seconds - 40);
        const int end = start + pick(40);
        store_.insertRecording(app, start, end, false, "s");
        for (int second = start; second < end; ++second) stored[second] = true;
    }
    store_.save();
    ordered_json windows;
    ordered_json presences;
    for (int i = 0; i < 60; ++i) {
        const int start = pick(seconds - 30);
        const int end = start + pick(30);
        const bool isAway = pick(2) == 0;
        presences.push_back(presence(start, end - start, isAway ? "afk" : "not-afk"));
        for (int second = start; isAway && second < end; ++second) away[second] = true;
    }
    std::vector<std::tuple<int, int, int, std::string>> events;
    for (int i = 0; i < 150; ++i) {
        const int start = pick(seconds - 40);
        events.emplace_back(start, i, start + pick(40), std::string(1, static_cast<char>('a' + pick(5))));
        windows.push_back(
            window(start, std::get<2>(events.back()) - start, std::get<3>(events.back()).c_str()));
    }
    std::sort(events.begin(), events.end());
    for (const auto& [start, index, end, title] : events)
        for (int second = start; second < end; ++second)
            if (expected[second].empty()) expected[second] = away[second] ? "(" + title + ")" : title;

    import({{"windows", bucket("currentwindow", windows)}, { "presence", bucket("afkstatus", presences) }});
    std::vector<std::string> actual(seconds);
    for (const auto& recording : store_.context().fetch<OrvaneRecording>({"Recording"})) {
        const std::string title(recording->windowName().value_or(""));
        if (title == "s") continue;
        for (int second = static_cast<int>(secondsSinceEpoch(*recording->startDate()));
             second < static_cast<int>(secondsSinceEpoch(*recording->endDate())); ++second) {
            EXPECT_TRUE(actual[second].empty()) << second << " is recorded twice";
            actual[second] = recording->idleValue() ? "(" + title + ")" : title;
        }
    }
    for (int second = 0; second < seconds; ++second)
        EXPECT_EQ(actual[second], stored[second] ? "" : expected[second]) << "in second " << second;
}

}  // namespace
}  // namespace orvane::test
