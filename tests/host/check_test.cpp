#include <gtest/gtest.h>

#include "tests/host/program.h"
#include "tests/tracker/tracked_desk.h"

namespace orvane::test {
namespace {

class Check : public testing::Test {
  protected:
    Check() {
        writeBytes(folder_ / "in.jsonl", R"({"type":"export","version":1}
{"type":"group","number":1,"identifier":"G","name":"Work"}
{"type":"application","number":1,"identifier":"org.a","name":"A","group":1}
{"type":"recording","application":1,"start":1700000000,"end":1700000010,"idle":false,"window":"one"}
{"type":"recording","application":1,"start":1700000020,"end":1700000030,"idle":false,"window":"two"}
)");
        EXPECT_EQ(runProgram({"import", folder_ / "in.jsonl", "--store", folder_ / "store"}).status, 0);
    }
    std::filesystem::path store() const { return folder_ / "store" / "Orvaning.db"; }
    ProgramRun check() { return runProgram({"check", "--json", "--store", folder_ / "store"}); }
    /// "STATUS: KIND ROWS WHAT; …" after other programs changed the store, which is as before then.
    std::string findingsAfter(const std::string& sql) {
        const std::string before = bytesOf(store());
        runSQL(store(), sql);
        const std::string changed = bytesOf(store());
        const ProgramRun run = check();
        EXPECT_TRUE(bytesOf(store()) == changed) << "a check wrote to the store";
        writeBytes(store(), before);
        std::string result = std::to_string(run.status) + ":";
        const nlohmann::json report = run.json();
        for (const auto& finding : report["findings"])
            result += " " + finding["kind"].get<std::string>() + " " +
                      std::to_string(finding["rows"].get<int>()) + " " + finding["what"].get<std::string>() +
                      ";";
        return result;
    }

    TemporaryFolder folder_;
};

TEST_F(Check, FindsWhatTheLibraryNeverWrites) {
    EXPECT_EQ(findingsAfter("SELECT 1"), "0:");
    EXPECT_EQ(findingsAfter("UPDATE Recording SET application = 9 WHERE windowName = 'one'"),
              "1: damage 1 Recording rows whose application does not exist;");
    EXPECT_EQ(findingsAfter("UPDATE _keys SET last = 1 WHERE entity = 'Recording'"),
              "1: damage 1 Recording rows with keys that could be given out again;");
    EXPECT_EQ(findingsAfter("UPDATE Recording SET idle = 7"),
              "1: damage 2 Recording rows whose idle is neither true nor false;");
    EXPECT_EQ(findingsAfter("UPDATE Application SET name = CAST(x'41ff' AS TEXT)"),
              "1: damage 1 Application rows whose name is no text in UTF-8;");
    EXPECT_EQ(findingsAfter("DELETE FROM _metadata WHERE name = 'model'"),
              "1: damage 0 its metadata is incomplete;");
    EXPECT_TRUE(findingsAfter("DROP TABLE Recording").starts_with("1: damage 0 the table \"Recording\""));
}

TEST_F(Check, TellsOfOddities) {
    EXPECT_EQ(findingsAfter("UPDATE Recording SET startDate = 1700000005 WHERE windowName = 'two'"),
              "0: oddity 1 Recording rows that overlap one before them;");
    EXPECT_EQ(findingsAfter("UPDATE Recording SET endDate = 1699999999 WHERE windowName = 'one'"),
              "0: oddity 1 Recording rows that end before they begin;");
    EXPECT_EQ(findingsAfter("UPDATE Recording SET startDate = -5, endDate = NULL WHERE windowName = 'one'"),
              "0: oddity 1 Recording rows whose startDate lies before 1970; oddity 1 Recording rows without "
              "beginning or end;");
    EXPECT_EQ(findingsAfter("UPDATE Recording SET endDate = 1e11 WHERE windowName = 'two'"),
              "0: oddity 1 Recording rows whose endDate lies in the future;");
    EXPECT_EQ(findingsAfter("DROP INDEX \"Application:identifier\""),
              "0: oddity 0 indexes are missing or changed; they are made anew when it is opened;");
}

TEST_F(Check, ToldApartFromWhatCannotBeChecked) {
    const auto refusal = [&] {
        const ProgramRun run = check();
        EXPECT_EQ(run.output, "");
        return std::to_string(run.status) + " " + run.errors;
    };
    writeBytes(store(), "this is no database, but a text that somebody wrote\n");
    EXPECT_TRUE(refusal().starts_with("1 orvane: The database")) << refusal();
    std::filesystem::remove(store());
    runSQL(store(), "CREATE TABLE t(a)");
    EXPECT_NE(refusal().find("belongs to another application"), std::string::npos);
    std::filesystem::remove(store());
    EXPECT_TRUE(refusal().starts_with("2 orvane: there is no store at"));
}

// A page that cannot be read must not look like time that nobody worked.
TEST_F(Check, CommandsTellWhatTheyCouldNotRead) {
    constexpr std::size_t pageSize = 4096;
    const std::string sound = bytesOf(store());
    const auto statuses = [&](const std::string& damaged) {
        const std::string root =
            runSQL(store(), "SELECT rootpage FROM sqlite_master WHERE name = '" + damaged + "'");
        std::string bytes = sound;
        bytes.replace((std::stoul(root) - 1) * pageSize, pageSize, pageSize, '\xff');
        writeBytes(store(), bytes);
        std::string result;
        for (const std::string command : {"report 2023-11-14", "report 2023-11-14 --html \"$1/page\"",
                                          "presence 2023-11-14", "apps", "groups", "apps disable org.a"}) {
            const ProgramRun run = runShell("\"$0\" " + command + " --store \"$1/store\"", folder_.path());
            EXPECT_EQ(run.errors.find("is damaged") == std::string::npos, run.status == 0)
                << command << run.errors;
            EXPECT_EQ(run.output.find("othing was recorded"), std::string::npos) << command;
            result += std::to_string(run.status);
        }
        EXPECT_EQ(std::filesystem::remove(folder_ / "page"), result[1] == '0');
        writeBytes(store(), sound);
        return result;
    };
    EXPECT_EQ(statuses("Recording"), "111000");
    EXPECT_EQ(statuses("Application"), "110111");
    EXPECT_EQ(statuses("Recording:idle,startDate"), "111000");
    EXPECT_EQ(statuses("Recording:application,endDate,startDate,idle"), "000110");
}

TEST(CheckWhileTracking, DisturbsNobody) {
    TrackedDesk desk;
    desk.desktop().clock().setWallTime(std::chrono::seconds(1700000000));
    desk.show("org.a", "notes");
    desk.tracker();
    for (int i = 0; i < 5; ++i) {
        desk.pass(10);
        EXPECT_EQ(runProgram({"check", "--store", desk.folder()}).status, 0);
    }
    EXPECT_EQ(desk.recordings(), "org.a notes 50");
}

}  // namespace
}  // namespace orvane::test
