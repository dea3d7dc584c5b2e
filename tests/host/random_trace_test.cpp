#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <sstream>

#include "host/replay/replay.h"
#include "random_trace.h"

namespace orvane::host {
namespace {

constexpr double epochFraction = 0.25;  // of the second, see the header of the traces

double seconds(const Json& decimalText) { return std::stod(decimalText.get<std::string>()); }

bool isHosts(const Json& recording) {
    const Json& window = recording["windowName"];
    return window.is_string() && window.get<std::string>().starts_with(hostWindow);
}

/// From start to end, nothing for idle ones and for those that miss a date.
double lengthOf(const Json& recording) {
    if (recording["idle"] == true || recording["endDate"].is_null()) return 0;
    return recording["endDate"].get<double>() - recording["startDate"].get<double>();
}

/// The recordings of a dump that polls made.
std::vector<Json> polled(const Json& dump) {
    std::vector<Json> result;
    for (const Json& recording : dump["recordings"])
        if (!isHosts(recording)) result.push_back(recording);
    return result;
}

/// Follows a trace and what it printed side by side, and holds every answer to what must be true whatever
/// happened before.
class Watch {
  public:
    explicit Watch(const RandomTraceOptions& options) : options_(options) {}

    void line(const Json& line) {
        at_ = line["at"];
        if (line.contains("defaults") && line["defaults"]["OrvaneEnabled"] != default_)
            setEnabled(default_ = line["defaults"]["OrvaneEnabled"]);
        if (line.contains("tracker") && line["tracker"].contains("enabled"))
            setEnabled(line["tracker"]["enabled"]);
        if (line.contains("tracker") && line["tracker"].contains("idleThreshold"))
            threshold_ = line["tracker"]["idleThreshold"];
        if (line.contains("desktop") && line["desktop"].contains("frontmost"))
            frontmost_ = line["desktop"]["frontmost"];
        if (line.contains("current")) mayLose_ = true;
        const std::string notice = line.value("notify", "");
        isStopped_ = line.value("call", "") == "stop:" ||
                     (notice.starts_with("NSWorkspace") && notice.find("Sleep") != std::string::npos) ||
                     notice == "NSApplicationWillTerminateNotification" ||
                     (line.contains("defaults") && enabled_.is_null());
        if (isStopped_ && !notice.empty()) breaks_.insert(at_);
        // The pending polls are cancelled and one runs, which asks for the next.
        isRestarted_ =
            notice == "NSWorkspaceDidActivateApplicationNotification" && enabled_ == true && !isLocked();
        if (enabled_ == true || !notice.empty()) mayRecord_ = true;
    }

    void state(const Json& state) {
        EXPECT_EQ(state["enabled"], enabled_);
        EXPECT_EQ(state["idleThreshold"], threshold_.is_null() ? Json(2) : threshold_);
        EXPECT_GE(state["idleTime"], 0);
        EXPECT_LE(state["idleTime"], at_ + 5000);
        if (isStopped_) {
            EXPECT_EQ(state["pendingRequests"], 0);
        }
        if (isRestarted_ && !options_.storageFailures) {
            EXPECT_EQ(state["pendingRequests"], 1);
        }
        current_ = state["currentRecording"];
        if (!current_.is_object()) return;
        EXPECT_TRUE(current_["application"].is_string());
        if (!options_.clockSteps) {
            EXPECT_LE(current_["endDate"], at_);
            EXPECT_LE(current_["startDate"], current_["endDate"]);
        }
    }

    void dump(const Json& dump) {
        std::vector<Json> recordings = polled(dump);
        for (const Json& recording : recordings) {
            EXPECT_TRUE(recording["application"].is_string()) << recording;
            for (const char* date : {"startDate", "endDate"}) {
                const double wall = recording[date].get<double>() + epochFraction;
                EXPECT_EQ(wall, std::floor(wall)) << recording;
            }
        }
        if (!options_.clockSteps) expectOneAfterTheOther(recordings);
        expectTotals(dump);
        expectNothingChangedButTheCurrent(recordings);
        last_ = std::move(recordings);
        lastCurrent_ = current_;
        mayLose_ = false;
        mayRecord_ = enabled_ == true;
        dump_ = dump;
    }

    /// The report over all times says the same as the dump just before it.
    void items(const Json& items) {
        std::map<std::string, double> expected;
        double total = 0;
        for (const Json& recording : dump_["recordings"]) {
            if (recording["idle"] != false || !recording["application"].is_string()) continue;
            expected[recording["application"]] += lengthOf(recording);
            total += lengthOf(recording);
        }
        std::map<std::string, double> reported;
        double reportedTotal = 0;
        double before = INFINITY;
        std::size_t groups = 0;
        const auto take = [&](const Json& app) {
            EXPECT_NE(app["identifier"], nullptr);
            reported[app["identifier"]] += seconds(app["duration"]);
        };
        for (const Json& item : items) {
            EXPECT_LE(seconds(item["duration"]), before);
            before = seconds(item["duration"]);
            reportedTotal += before;
            if (item["kind"] == "app") take(item);
            for (const Json& app : item["appsForRange"]) take(app);
            groups += item["kind"] == "group";
        }
        EXPECT_EQ(groups, dump_["groups"].size());
        EXPECT_NEAR(reportedTotal, total, 1e-4);
        ASSERT_EQ(reported.size(), expected.size());
        for (const auto& [application, duration] : expected)
            EXPECT_NEAR(reported[application], duration, 1e-4) << application;
    }

    /// The day begins with a recording and ends with one.
    void presence(const Json& presence) {
        if (presence["startDate"].is_null()) {
            EXPECT_EQ(presence["label"], "-");
            EXPECT_TRUE(presence["endDate"].is_null());
            return;
        }
        bool starts = false;
        bool ends = false;
        for (const Json& recording : dump_["recordings"]) {
            if (recording["idle"] != false) continue;
            starts = starts || recording["startDate"] == presence["startDate"];
            ends = ends || recording["endDate"] == presence["endDate"];
        }
        EXPECT_TRUE(starts && ends) << presence;
    }

  private:
    void setEnabled(const Json& value) { enabled_ = value; }
    bool isLocked() const {
        return frontmost_.is_object() && frontmost_.value("bundleIdentifier", "") == "com.apple.loginwindow";
    }

    /// None begins before the one before it has ended, and none ends later than now. Where nothing ever ends
    /// a recording but the next one and sleep, there is no gap without a sleep.
    void expectOneAfterTheOther(std::vector<Json>& recordings) {
        for (std::size_t i = 0; i < recordings.size(); ++i) {
            EXPECT_LE(recordings[i]["startDate"], recordings[i]["endDate"]);
            EXPECT_LE(recordings[i]["endDate"], at_);
            if (i == 0) continue;
            const double ended = recordings[i - 1]["endDate"];
            const double begun = recordings[i]["startDate"];
            EXPECT_LE(ended, begun) << recordings[i - 1] << recordings[i];
            if (ended == begun || options_.hostEdits || options_.storageFailures || options_.lostRecordings)
                continue;
            const auto sleep = breaks_.lower_bound(ended);
            EXPECT_TRUE(sleep != breaks_.end() && *sleep <= begun + 1) << recordings[i - 1] << recordings[i];
        }
    }

    void expectTotals(const Json& dump) {
        std::map<std::string, double> durations;
        std::map<std::string, double> ends;
        for (const Json& recording : dump["recordings"]) {
            EXPECT_NEAR(seconds(recording["duration"]), lengthOf(recording), 1e-6);
            if (!recording["application"].is_string()) continue;
            const std::string application = recording["application"];
            durations[application] += lengthOf(recording);
            if (recording["endDate"].is_null()) continue;
            const auto [place, isNew] = ends.try_emplace(application, recording["endDate"]);
            place->second = std::max(place->second, recording["endDate"].get<double>());
        }
        // With a disk that fails an application may have been met twice; then only the sums can be told.
        std::map<std::string, double> told;
        std::map<std::string, double> used;
        for (const Json& application : dump["applications"]) {
            told[application["identifier"]] += seconds(application["duration"]);
            if (application["lastUsedDate"].is_null()) continue;
            const auto [place, isNew] =
                used.try_emplace(application["identifier"], application["lastUsedDate"]);
            place->second = std::max(place->second, application["lastUsedDate"].get<double>());
        }
        if (!options_.storageFailures) {
            EXPECT_EQ(told.size(), dump["applications"].size());
        }
        for (const auto& [application, duration] : durations)
            EXPECT_NEAR(told[application], duration, 1e-4) << application;
        EXPECT_EQ(used, ends);
    }

    /// What was recorded once stays as it is, but for the recording that was current; and while tracking was
    /// off, nothing is added.
    void expectNothingChangedButTheCurrent(const std::vector<Json>& recordings) {
        if (options_.storageFailures) return;
        std::multiset<Json> now(recordings.begin(), recordings.end());
        std::size_t missing = 0;
        for (const Json& recording : last_) {
            const auto found = now.find(recording);
            if (found == now.end())
                ++missing;
            else
                now.erase(found);
        }
        // `current` lines drop the end that a recording got last, or take it away.
        if (!mayLose_) {
            EXPECT_LE(missing, lastCurrent_.is_null() ? 0u : 1u);
        }
        if (!mayRecord_) {
            EXPECT_TRUE(now.empty());
        }
    }

    RandomTraceOptions options_;
    double at_ = 0;
    Json default_ = true;
    Json enabled_ = true;
    Json threshold_;
    Json frontmost_;
    Json current_;
    Json lastCurrent_;
    Json dump_;
    std::vector<Json> last_;
    std::set<double> breaks_;
    bool isStopped_ = false;
    bool isRestarted_ = false;
    bool mayLose_ = false;
    bool mayRecord_ = true;
};

struct Case {
    const char* name;
    RandomTraceOptions options;
};

class RandomTraces : public testing::TestWithParam<Case> {};

std::string outputOf(const std::string& trace) {
    std::istringstream input(trace);
    std::ostringstream output;
    std::ostringstream errors;
    EXPECT_EQ(runReplay(input, output, errors), replayCompleted) << errors.str();
    return output.str();
}

TEST_P(RandomTraces, KeepWhatMustAlwaysHold) {
    for (std::uint32_t seed = 1; seed <= 2; ++seed) {
        SCOPED_TRACE(seed);
        const std::vector<Json> lines = randomTrace(seed, GetParam().options);
        const std::string output = outputOf(traceText(lines));
        Watch watch(GetParam().options);
        std::istringstream printed(output);
        for (std::size_t i = 1; i < lines.size(); ++i) {
            SCOPED_TRACE("line " + std::to_string(i + 1));
            if (!lines[i].contains("query")) {
                watch.line(lines[i]);
                continue;
            }
            Json answer;
            const std::string query = lines[i]["query"];
            const std::string key = query == "dump" ? "recordings" : query;
            // Errors and log lines stand between the answers.
            for (std::string text; !answer.contains(key);) {
                ASSERT_TRUE(std::getline(printed, text));
                answer = Json::parse(text);
            }
            EXPECT_EQ(answer["at"], lines[i]["at"]);
            if (query == "state") watch.state(answer["state"]);
            if (query == "dump") watch.dump(answer);
            if (query == "items") watch.items(answer["items"]);
            if (query == "presence") watch.presence(answer["presence"]);
            if (HasFailure()) return;
        }
    }
}

TEST_P(RandomTraces, GiveTheSameOutputEveryTime) {
    RandomTraceOptions options = GetParam().options;
    options.events = 300;
    const std::string trace = traceText(randomTrace(7, options));
    EXPECT_EQ(outputOf(trace), outputOf(trace));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, RandomTraces,
    testing::Values(Case{"PlainUse", {.events = 2000}},
                    Case{"ClockSteps", {.events = 1000, .clockSteps = true, .hostEdits = true}},
                    Case{"StorageFailures", {.events = 1000, .storageFailures = true, .hostEdits = true}},
                    Case{"HostEdits", {.events = 1500, .hostEdits = true}},
                    Case{"LostRecordings", {.events = 1000, .hostEdits = true, .lostRecordings = true}},
                    Case{"Everything",
                         {.events = 1000,
                          .clockSteps = true,
                          .storageFailures = true,
                          .hostEdits = true,
                          .lostRecordings = true}}),
    [](const auto& kind) { return std::string(kind.param.name); });

}  // namespace
}  // namespace orvane::host
