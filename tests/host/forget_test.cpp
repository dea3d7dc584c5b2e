#include <gtest/gtest.h>

#include "tests/host/program.h"
#include "tests/tracker/tracked_desk.h"

namespace orvane::test {
namespace {

// Dates are seconds since 2026-03-02T00:00:00Z below.
constexpr std::int64_t monday = 1772409600;

class Forget : public testing::Test {
  protected:
    /// Puts recordings into the store: "APPLICATION START END TITLE" each.
    void record(const std::vector<std::string>& recordings) {
        std::string lines = R"({"type":"export","version":1}
{"type":"group","number":1,"name":"Work"}
{"type":"application","number":1,"identifier":"org.a.Editor","name":"Editor","group":1}
{"type":"application","number":2,"identifier":"org.b.Mail","name":"Mail"}
{"type":"application","number":3,"identifier":"org.c.Off","name":"Off","disabled":true}
)";
        for (const std::string& recording : recordings) {
            std::istringstream words(recording);
            std::string app;
            std::string title;
            std::int64_t start = 0;
            std::int64_t end = 0;
            words >> app >> start >> end >> std::ws;
            std::getline(words, title);
            lines += R"({"type":"recording","application":)" + app + R"(,"start":)" +
                     std::to_string(monday + start) + R"(,"end":)" + std::to_string(monday + end) +
                     R"(,"window":")" + title + "\"}\n";
        }
        writeBytes(folder_ / "in.jsonl", lines);
        const ProgramRun run = runProgram({"import", folder_ / "in.jsonl", "--store", folder_ / "store"});
        ASSERT_EQ(run.status, 0) << run.errors;
        std::filesystem::remove(folder_ / "in.jsonl");
    }
    ProgramRun forget(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "forget");
        arguments.insert(arguments.end(), {"--store", folder_ / "store"});
        return runProgram(arguments);
    }
    /// "TITLE START END" of each recording.
    std::string left() const {
        return runSQL(database(),
                      "SELECT windowName || ' ' || CAST(startDate - 1772409600 AS INTEGER) || ' ' || "
                      "CAST(endDate - 1772409600 AS INTEGER) FROM Recording ORDER BY startDate");
    }
    std::string applications() const {
        return runSQL(database(), "SELECT name FROM Application ORDER BY name");
    }
    std::filesystem::path database() const { return folder_ / "store" / "Orvaning.db"; }
    bool isInFolder(const std::string& text) const {
        for (const auto& entry : std::filesystem::directory_iterator(folder_ / "store"))
            if (bytesOf(entry.path()).find(text) != std::string::npos) return true;
        return false;
    }

    TemporaryFolder folder_;
};

TEST_F(Forget, DeletesATimeAndCutsWhatReachesBeyondIt) {
    record({"1 0 100 early", "2 3000 5000 begins before", "2 6000 6100 within", "1 7100 9000 ends after",
            "2 86000 90000 over midnight"});
    EXPECT_EQ(forget({"2026-03-02T01:00..2026-03-02T02:00", "--yes"}).output,
              "Deleted 1 recording and part of 2 more (26:40).\n");
    EXPECT_EQ(left(), "early 0 100 begins before 3000 3600 ends after 7200 9000 over midnight 86000 90000");
    // Of a whole day nothing stays, not even its last second.
    EXPECT_EQ(forget({"2026-03-02", "--yes", "--json"}).json(),
              nlohmann::json::parse(R"({"recordings": 3, "cut": 1, "duration": "2900.000000",
                                        "removedApplications": [], "keptApplications": ["Editor"]})"));
    EXPECT_EQ(left(), "over midnight 86400 90000");
    EXPECT_EQ(applications(), "Editor Mail Off");
    EXPECT_EQ(runProgram({"check", "--store", folder_ / "store"}).status, 0);
}

TEST_F(Forget, DeletesAnApplicationInATimeOrAltogether) {
    record({"1 0 100 a", "2 100 200 b", "1 86400 86500 c", "2 86500 86600 d", "3 90000 90010 e"});
    EXPECT_EQ(forget({"2026-03-03", "--app", "mail", "--yes"}).output, "Deleted 1 recording (1:40).\n");
    EXPECT_EQ(left(), "a 0 100 b 100 200 c 86400 86500 e 90000 90010");
    EXPECT_EQ(forget({"--app", "org.b.Mail", "--yes"}).output,
              "Deleted 1 recording (1:40).\nDeleted with them, as nothing is left of it: Mail.\n");
    EXPECT_EQ(
        forget({"all", "--yes"}).output,
        "Deleted 3 recordings (3:30).\nStill listed, as it is in a group or switched off: Editor, Off.\n");
    EXPECT_EQ(left(), "");
}

TEST_F(Forget, AsksFirstAndRefusesWhatItCannotRead) {
    record({"1 0 100 a"});
    const auto refused = [&](const std::vector<std::string>& arguments, int status, const std::string& told) {
        const ProgramRun run = forget(arguments);
        EXPECT_EQ(run.status, status);
        EXPECT_NE(run.errors.find(told), std::string::npos) << run.errors;
        EXPECT_EQ(left(), "a 0 100");
    };
    refused({"all"}, 2, "would delete 1 recording (1:40). Add --yes to do so.");
    refused({"--yes"}, 2, "name what to forget");
    refused({"yesturday", "--yes"}, 2, "Did you mean \"yesterday\"?");
    refused({"--app", "Edit", "--yes"}, 2, "no application");
    EXPECT_EQ(runProgram({"forget", "all", "--yes", "--store", folder_ / "none"}).status, 2);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "none"));
}

// Rows leave copies of themselves where pages were split, in the journal and on pages that are free.
TEST_F(Forget, LeavesNoByteOfATitle) {
    std::vector<std::string> recordings;
    for (int i = 0; i < 3000; ++i) {
        const std::string span = std::to_string(i * 20) + " " + std::to_string(i * 20 + 10);
        recordings.push_back((i % 3 == 0 ? "2 " : "1 ") + span +
                             (i % 3 == 0 ? " forgotten-" + std::string(static_cast<std::size_t>(i % 200), 'x')
                                         : " kept " + std::to_string(i)));
    }
    record(recordings);
    // Some of them are gone already, without having been overwritten.
    runSQL(database(), "PRAGMA secure_delete = OFF; DELETE FROM Recording WHERE _id % 7 = 0");
    ASSERT_TRUE(isInFolder("forgotten-"));
    const ProgramRun run = forget({"--app", "Mail", "--yes"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_FALSE(isInFolder("forgotten-"));
    EXPECT_FALSE(isInFolder("org.b.Mail"));
    EXPECT_TRUE(isInFolder("kept 1001"));
    EXPECT_FALSE(std::filesystem::exists(database().string() + "-journal"));
    EXPECT_EQ(runProgram({"check", "--store", folder_ / "store"}).status, 0);
}

// What a run leaves that was killed after it had deleted: its journal, and no application to name any more.
TEST_F(Forget, ASecondRunEndsWhatTheFirstBegan) {
    record({"1 0 100 kept"});
    writeBytes(database().string() + "-journal", std::string(512, '\0') + "org.b.Mail forgotten");
    EXPECT_EQ(forget({"--app", "org.b.Male", "--yes"}).status, 2);
    EXPECT_FALSE(isInFolder("forgotten"));
    EXPECT_EQ(left(), "kept 0 100");
}

TEST(ForgetWhileTracking, TheTrackerBringsNothingBack) {
    TrackedDesk desk;
    desk.desktop().clock().setWallTime(std::chrono::seconds(monday));
    desk.show("org.a", "secret plan");
    desk.tracker();
    desk.pass(40);
    const auto forget = [&](const std::string& range) {
        return runProgram({"forget", range, "--yes", "--store", desk.folder()}).errors;
    };
    // The beginning, then the end of the span that is being recorded, then all of it.
    EXPECT_EQ(forget("2026-03-02T00:00:00..2026-03-02T00:00:20"), "");
    EXPECT_EQ(desk.recordings(), "org.a secret plan 20");
    desk.pass(20);
    EXPECT_EQ(desk.recordings(), "org.a secret plan 20 org.a secret plan 10");
    EXPECT_EQ(forget("2026-03-02T00:00:30..2026-03-02T00:00:55"), "");
    EXPECT_EQ(desk.recordings(), "org.a secret plan 10 org.a secret plan 5");
    EXPECT_EQ(forget("all"), "");
    EXPECT_EQ(desk.recordings(), "");
    desk.show("org.b", "notes");
    desk.pass(30);
    EXPECT_EQ(desk.recordings(), "org.b notes 20");
    for (const auto& entry : std::filesystem::directory_iterator(desk.folder()))
        EXPECT_EQ(bytesOf(entry.path()).find("secret"), std::string::npos) << entry.path();
}

}  // namespace
}  // namespace orvane::test
