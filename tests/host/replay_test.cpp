#include "host/replay/replay.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/replay/trace_json.h"

namespace orvane::host {
namespace {

namespace fs = std::filesystem;

const std::string wildcard = "…";

struct Outcome {
    int status;
    std::vector<Json> output;
    std::string errors;
};

Outcome run(std::istream& trace, const std::optional<fs::path>& supportFolder = std::nullopt) {
    std::ostringstream output;
    std::ostringstream errors;
    const int status =
        runReplay(trace, output, errors, {.supportFolder = supportFolder, .resourceFolder = {}});
    Outcome outcome{status, {}, errors.str()};
    std::istringstream lines(output.str());
    for (std::string line; std::getline(lines, line);) outcome.output.push_back(Json::parse(line));
    return outcome;
}

/// Runs the lines after a header whose tracker is made when one of them asks for it.
Outcome runLines(const std::string& lines, const std::optional<fs::path>& supportFolder = std::nullopt) {
    std::istringstream trace(R"({"trace": 1, "epoch": "2026-05-04T00:00:00Z", "start": false})"
                             "\n" +
                             lines);
    return run(trace, supportFolder);
}

/// Whether the output is as expected, where an expected text that ends in "…" leaves open how it goes on.
bool matches(const Json& expected, const Json& actual) {
    if (expected.is_string() && expected.get<std::string>().ends_with(wildcard)) {
        const std::string text = expected.get<std::string>();
        const std::string begin = text.substr(0, text.size() - wildcard.size());
        return begin.empty() || (actual.is_string() && actual.get<std::string>().starts_with(begin));
    }
    if (!expected.is_structured() || expected.type() != actual.type()) return expected == actual;
    if (expected.size() != actual.size()) return false;
    if (expected.is_array()) {
        for (std::size_t i = 0; i < expected.size(); ++i)
            if (!matches(expected[i], actual[i])) return false;
        return true;
    }
    for (const auto& [key, value] : expected.items())
        if (!actual.contains(key) || !matches(value, actual[key])) return false;
    return true;
}

class ReplayOfTrace : public testing::TestWithParam<const char*> {};

TEST_P(ReplayOfTrace, PrintsWhatIsExpected) {
    const fs::path folder = fs::path(ORVANE_SOURCE_DIR) / "tests" / "host" / "traces";
    std::ifstream trace(folder / (std::string(GetParam()) + ".jsonl"));
    std::ifstream expected(folder / (std::string(GetParam()) + ".expected.jsonl"));
    ASSERT_TRUE(trace && expected);
    const Outcome outcome = run(trace);
    EXPECT_EQ(outcome.status, replayCompleted) << outcome.errors;
    std::size_t index = 0;
    for (std::string line; std::getline(expected, line); ++index) {
        ASSERT_LT(index, outcome.output.size()) << "missing: " << line;
        EXPECT_TRUE(matches(Json::parse(line), outcome.output[index]))
            << "expected: " << line << "\n     got: " << outcome.output[index];
    }
    EXPECT_EQ(index, outcome.output.size());
}

INSTANTIATE_TEST_SUITE_P(Traces, ReplayOfTrace, testing::Values("edits", "faults", "storage", "times"),
                         [](const auto& trace) { return std::string(trace.param); });

class ReplayOverFolder : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = fs::temp_directory_path() / "orvane-replay-test-XXXXXX";
        folder_ = mkdtemp(pattern.data());
    }
    void TearDown() override { fs::remove_all(folder_); }

    fs::path folder_;
};

TEST(Replay, AnInvalidLineEndsItBeforeWhatIsDueRuns) {
    const std::string running = R"({"at": 0, "defaults": {"OrvaneEnabled": true}}
{"at": 0, "call": "sharedOrvane"}
{"at": 5, "query": "state"}
)";
    const Outcome outcome = runLines(running + R"({"at": 60, "query": "status"})"
                                               "\n"
                                               R"({"at": 70, "query": "state"})");
    EXPECT_EQ(outcome.status, replayInvalid);
    ASSERT_EQ(outcome.output.size(), 1u);
    EXPECT_EQ(outcome.output[0]["at"], 5);
    EXPECT_NE(outcome.errors.find("line 5"), std::string::npos);
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1);
}

TEST(Replay, WhatIsNotStoredCannotBeEdited) {
    for (const char* edit : {R"({"application": "a", "name": "b"})", R"({"group": "a", "name": "b"})",
                             R"({"insertRecording": {"application": "a", "start": 0}})"}) {
        // The poll that was due has run by then, and its log line stands.
        const Outcome outcome =
            runLines(R"({"at": 0, "defaults": {"OrvaneEnabled": true, "OrvaneLogging": true}}
{"at": 0, "call": "sharedOrvane"}
{"at": 1, "desktop": {"frontmost": {"bundleIdentifier": "x", "processIdentifier": 7}, "windows": [{"kCGWindowOwnerPID": 7, "kCGWindowLayer": 0, "kCGWindowName": "w"}]}}
{"at": 15, "edit": )" +
                     std::string(edit) + "}\n");
        EXPECT_EQ(outcome.status, replayInvalid) << edit;
        ASSERT_EQ(outcome.output.size(), 1u) << edit;
        EXPECT_EQ(outcome.output[0]["at"], 10);
    }
}

TEST(Replay, BeforeTheTrackerOnlySomeLinesAreValid) {
    EXPECT_EQ(runLines(R"({"at": 0, "current": "reset"})").status, replayInvalid);
    EXPECT_EQ(runLines(R"({"at": 0, "query": "dump"})").status, replayInvalid);
    const Outcome outcome = runLines(R"({"at": 1, "query": "state"}
{"at": 1, "query": "presence", "date": 0}
{"at": 1, "query": "dump"})");
    EXPECT_EQ(outcome.status, replayCompleted) << outcome.errors;
    ASSERT_EQ(outcome.output.size(), 3u);
    EXPECT_TRUE(outcome.output[0]["state"].is_null());
}

TEST(Replay, TracesThatCannotBeReadAreInvalid) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(runReplayFile("/nonexistent/trace.jsonl"), replayInvalid);
    EXPECT_EQ(runReplayFile("/"), replayInvalid);
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
}

TEST_F(ReplayOverFolder, ASecondRunContinuesWithIdentifiersOfItsOwn) {
    const std::string lines = R"({"at": 0, "call": "sharedOrvane"}
{"at": 0, "edit": {"insertGroup": "a"}}
{"at": 0, "edit": {"insertGroup": "b"}}
{"at": 0, "query": "items", "from": 0, "to": 1})";
    std::set<std::string> identifiers;
    for (std::size_t groups = 2; groups <= 6; groups += 2) {
        const Outcome outcome = runLines(lines, folder_);
        ASSERT_EQ(outcome.status, replayCompleted) << outcome.errors;
        for (const Json& item : outcome.output.back()["items"]) identifiers.insert(item["identifier"]);
        EXPECT_EQ(identifiers.size(), groups);
    }
    EXPECT_TRUE(fs::is_regular_file(folder_ / "Orvane" / "Orvaning.db"));

    const Outcome elsewhere = runLines(lines);
    EXPECT_TRUE(identifiers.contains(elsewhere.output.back()["items"][0]["identifier"]));
}

TEST_F(ReplayOverFolder, AFileInPlaceOfTheFolderIsTold) {
    std::ofstream(folder_ / "Orvane") << "in the way";
    const Outcome outcome = runLines(R"({"at": 0, "call": "sharedOrvane"}
{"at": 0, "query": "dump"})",
                                     folder_);
    ASSERT_EQ(outcome.output.size(), 3u);
    EXPECT_EQ(outcome.output[0]["error"]["code"], 101);
    EXPECT_EQ(
        outcome.output[0]["error"]["description"],
        "Expected a folder to store application data, found a file (" + (folder_ / "Orvane").string() + ").");
    EXPECT_TRUE(outcome.output[0]["error"]["failureReason"].is_null());
    EXPECT_EQ(outcome.output[1]["error"]["code"], 9999);
}

}  // namespace
}  // namespace orvane::host
