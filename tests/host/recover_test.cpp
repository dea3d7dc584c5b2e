#include <gtest/gtest.h>
#include <sys/stat.h>

#include <random>
#include <set>

#include "tests/host/program.h"
#include "tests/persistence/temporary_folder.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t pageSize = 4096;
constexpr int recordingCount = 4000;

/// A sound store, and what is left of it after it was damaged.
class Recover : public testing::Test {
  protected:
    Recover() {
        std::string lines = R"({"type":"export","version":1}
{"type":"group","number":1,"identifier":"G","name":"Work"}
{"type":"application","number":1,"identifier":"org.a","name":"A","group":1}
{"type":"application","number":2,"identifier":"org.b","name":"B"}
)";
        for (int i = 0; i < recordingCount; ++i)
            lines += R"({"type":"recording","application":)" + std::to_string(1 + i % 2) + R"(,"start":)" +
                     std::to_string(1700000000 + i * 20) + R"(,"end":)" +
                     std::to_string(1700000010 + i * 20) + R"(,"window":"title )" + std::to_string(i) +
                     std::string(i == 2000 ? 9000 : 0, 'x') + "\"}\n";
        writeBytes(folder_ / "in.jsonl", lines);
        EXPECT_EQ(runProgram({"import", folder_ / "in.jsonl", "--store", folder_ / "store"}).status, 0);
        sound_ = bytesOf(store());
        root_ = std::stoul(runSQL(store(), "SELECT rootpage FROM sqlite_schema WHERE name = 'Recording'"));
    }

    fs::path store() const { return folder_ / "store" / "Orvaning.db"; }
    std::string& page(std::string& bytes, std::size_t number, char filling) {
        bytes.replace((number - 1) * pageSize, pageSize, pageSize, filling);
        return bytes;
    }
    unsigned field(std::size_t place, std::size_t size) const {
        unsigned value = 0;
        for (std::size_t i = 0; i < size; ++i)
            value = value << 8 | static_cast<unsigned char>(sound_[place + i]);
        return value;
    }
    /// The pages right below the root of the recordings' table.
    std::vector<std::size_t> leaves() const {
        const std::size_t start = (root_ - 1) * pageSize;
        std::vector<std::size_t> result;
        for (unsigned i = 0; i < field(start + 3, 2); ++i)
            result.push_back(field(start + field(start + 12 + 2 * i, 2), 4));
        result.push_back(field(start + 8, 4));
        return result;
    }

    /// What the program tells of a damaged file, which it must not change.
    nlohmann::json recover(const std::string& bytes) {
        writeBytes(store(), bytes);
        fs::remove(to());
        const ProgramRun run = runProgram({"recover", store(), to(), "--json"});
        EXPECT_EQ(run.status, 0) << run.errors;
        EXPECT_TRUE(bytesOf(store()) == bytes);
        EXPECT_EQ(names(), "in.jsonl recovered.db store");
        if (run.status != 0) return {};
        EXPECT_EQ(runSQL(to(), "PRAGMA integrity_check"), "ok");
        // Not one row is there that was not before, or is another than before.
        writeBytes(folder_ / "sound.db", sound_);
        EXPECT_EQ(
            runSQL(to(), "ATTACH '" + (folder_ / "sound.db").string() +
                             "' AS s; SELECT count(*) FROM (SELECT * FROM Recording EXCEPT SELECT * FROM "
                             "s.Recording)"),
            "0");
        fs::remove(folder_ / "sound.db");
        return run.json();
    }
    void expectRefusal(const std::string& bytes, const std::string& told) {
        writeBytes(store(), bytes);
        const ProgramRun run = runProgram({"recover", store(), to()});
        EXPECT_EQ(run.status, 1);
        EXPECT_NE(run.errors.find(told), std::string::npos) << run.errors;
        EXPECT_EQ(names(), "in.jsonl store");
    }
    ProgramRun check() { return runProgram({"check", "--store", folder_ / "store"}); }
    std::string names() const {
        std::set<std::string> found;
        for (const auto& entry : fs::directory_iterator(folder_.path()))
            found.insert(entry.path().filename());
        std::string result;
        for (const std::string& name : found) result += (result.empty() ? "" : " ") + name;
        return result;
    }
    fs::path to() const { return folder_ / "recovered.db"; }

    TemporaryFolder folder_;
    std::string sound_;
    std::size_t root_ = 0;
};

TEST_F(Recover, TakesASoundStoreAsItIs) {
    const auto report = recover(sound_);
    EXPECT_EQ(report["entities"]["Recording"]["saved"], recordingCount);
    EXPECT_EQ(report["damagedPages"], 0);
    struct stat status {};
    ASSERT_EQ(::stat(to().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    fs::rename(to(), store());
    EXPECT_EQ(check().output, store().string() + " is sound: 2 Applications, 1 Group, 4000 Recordings.\n");
    EXPECT_EQ(runProgram({"report", "all", "--json", "--store", folder_ / "store"}).json().size(), 2U);
}

TEST_F(Recover, GoesAroundDamagedLeaves) {
    const auto pages = leaves();
    ASSERT_GT(pages.size(), 20U);
    std::string bytes = sound_;
    page(bytes, pages[3], '\xff');
    page(bytes, pages.back(), '\0');
    bytes[(pages[10] - 1) * pageSize + 100] = '\x7f';
    bytes[(pages[12] - 1) * pageSize + 8] = '\xff';
    const auto report = recover(bytes);
    const int saved = report["entities"]["Recording"]["saved"];
    const int missing = report["entities"]["Recording"]["missingAtMost"];
    EXPECT_EQ(saved + missing, recordingCount);
    EXPECT_GT(saved, recordingCount - 4 * 100);
    EXPECT_LT(saved, recordingCount);
    EXPECT_GE(report["damagedPages"], 3);
    const ProgramRun checked = check();
    EXPECT_EQ(checked.status, 1);
    EXPECT_NE(checked.output.find("is not sound"), std::string::npos) << checked.output;
}

TEST_F(Recover, FindsRowsThatNothingLeadsToAnyMore) {
    std::string bytes = sound_;
    page(bytes, root_, '\x55');
    auto report = recover(bytes);
    EXPECT_EQ(report["entities"]["Recording"]["saved"], recordingCount);
    EXPECT_EQ(report["entities"]["Recording"]["fromLoosePages"], recordingCount);
    // Without the first page nobody knows the tables either.
    page(bytes, 1, '\xaa');
    report = recover(bytes);
    EXPECT_EQ(report["entities"]["Recording"]["saved"], recordingCount);
    EXPECT_EQ(report["entities"]["Application"]["saved"], 2);
    EXPECT_TRUE(report["schemaLost"]);
}

TEST_F(Recover, LeavesAloneWhatWasDeleted) {
    runSQL(store(), "DELETE FROM Recording WHERE _id BETWEEN 1000 AND 3000");
    sound_ = bytesOf(store());
    std::string bytes = sound_;
    page(bytes, root_, '\x55');
    EXPECT_EQ(recover(bytes)["entities"]["Recording"]["saved"], recordingCount - 2001);
}

TEST_F(Recover, MakesStandInsForWhatOthersBelongTo) {
    std::string bytes = sound_;
    const std::size_t applications =
        std::stoul(runSQL(store(), "SELECT rootpage FROM sqlite_schema WHERE name = 'Application'"));
    page(bytes, applications, '\0');
    const auto report = recover(bytes);
    EXPECT_EQ(
        report["entities"]["Application"],
        nlohmann::json::parse(R"({"saved": 0, "fromLoosePages": 0, "missingAtMost": 2, "standIns": 2})"));
    EXPECT_EQ(runSQL(to(),
                     "SELECT name, count(*) FROM Application a JOIN Recording r ON r.application = a._id "
                     "GROUP BY a._id"),
              "Lost Application 1|2000 Lost Application 2|2000");
}

TEST_F(Recover, MakesASoundStoreOfValuesThatWereNeverWritten) {
    runSQL(
        store(),
        "UPDATE Recording SET idle = 7 WHERE _id = 1; UPDATE Recording SET application = -3 WHERE _id = 2; "
        "UPDATE Recording SET _id = -4 WHERE _id = 3");
    ASSERT_EQ(runProgram({"recover", store(), to()}).status, 0);
    EXPECT_EQ(runSQL(to(), "SELECT _id, idle, application IS NULL FROM Recording WHERE _id < 4 ORDER BY _id"),
              "1|1|0 2|-|1");
    std::filesystem::create_directory(folder_ / "recovered");
    std::filesystem::rename(to(), folder_ / "recovered" / "Orvaning.db");
    EXPECT_EQ(runProgram({"check", "--store", folder_ / "recovered"}).status, 0);
}

TEST_F(Recover, TakesFilesThatWereCutShort) {
    int before = recordingCount + 1;
    for (const std::size_t size :
         {sound_.size() - 1, sound_.size() * 2 / 3, sound_.size() / 4, sound_.size() / 6}) {
        const int saved = recover(sound_.substr(0, size))["entities"]["Recording"]["saved"];
        EXPECT_LE(saved, before) << size;
        EXPECT_EQ(check().status, 1) << size;
        before = saved;
    }
    EXPECT_LT(before, recordingCount);
    EXPECT_GT(before, 0);
}

TEST_F(Recover, ADamagedIndexCostsNothing) {
    std::string bytes = sound_;
    for (const char* index : {"Recording:idle,startDate", "Application:identifier"})
        page(bytes,
             std::stoul(runSQL(
                 store(), std::string("SELECT rootpage FROM sqlite_schema WHERE name = '") + index + "'")),
             '\x0a');
    const auto report = recover(bytes);
    EXPECT_EQ(report["entities"]["Recording"]["saved"], recordingCount);
    EXPECT_EQ(report["damagedPages"], 0);
    EXPECT_EQ(check().status, 1);
}

TEST_F(Recover, PutsAnInterruptedSaveBack) {
    // The journal of a program that ended in the middle of its save, and the file as it was then.
    const std::string journal = store().string() + "-journal";
    const ProgramRun cut = runShell(
        R"(python3 -c 'import sqlite3, os, sys
c = sqlite3.connect(sys.argv[1], isolation_level=None)
c.execute("PRAGMA cache_size = 1"); c.execute("BEGIN")
c.execute("UPDATE Recording SET windowName = \"changed\"")
c.execute("PRAGMA cache_spill = 1"); os._exit(0)' "$1")",
        store());
    ASSERT_EQ(cut.status, 0) << cut.errors;
    ASSERT_TRUE(fs::exists(journal));
    const std::string halfDone = bytesOf(store());
    ASSERT_FALSE(halfDone == sound_);
    const std::string journalBytes = bytesOf(journal);

    const ProgramRun checked = check();
    EXPECT_EQ(checked.status, 0) << checked.output;
    EXPECT_NE(checked.output.find("A save was cut off."), std::string::npos) << checked.output;
    EXPECT_EQ(recover(halfDone)["entities"]["Recording"]["saved"], recordingCount);
    EXPECT_TRUE(bytesOf(journal) == journalBytes);
}

TEST_F(Recover, RefusesWhatIsNoStore) {
    expectRefusal("Dear diary,\r\n\r\ntoday I wrote a text file.\r\n",
                  "is no database, and holds no part of one.");
    expectRefusal("", "is empty.");
    expectRefusal(std::string(50000, '\xff'), "is no database");
    expectRefusal(sound_.substr(0, 16) + std::string(20000, '\0'), "holds nothing that can be read.");
    fs::remove(store());
    runSQL(store(), "CREATE TABLE other(a); INSERT INTO other VALUES (1)");
    expectRefusal(bytesOf(store()), "is a database of another application.");
    fs::remove(store());
    EXPECT_NE(runProgram({"recover", store(), to()}).errors.find("cannot be read"), std::string::npos);

    writeBytes(store(), sound_);
    writeBytes(to(), "mine");
    const ProgramRun exists = runProgram({"recover", store(), to()});
    EXPECT_EQ(exists.status, 1);
    EXPECT_NE(exists.errors.find("exists already"), std::string::npos) << exists.errors;
    EXPECT_EQ(bytesOf(to()), "mine");
    EXPECT_EQ(runProgram({"recover", store(), folder_ / "no/such/folder.db"}).status, 1);
}

// Bytes anywhere are overwritten; no row may come out that was not put in.
TEST_F(Recover, MakesNothingUp) {
    std::mt19937 random(7);
    for (int round = 0; round < 12; ++round) {
        std::string bytes = sound_;
        for (int i = 0; i < 3; ++i)
            page(bytes, 2 + random() % (sound_.size() / pageSize - 1), static_cast<char>(random()));
        const int saved = recover(bytes)["entities"]["Recording"]["saved"];
        EXPECT_GE(saved, recordingCount - 3 * 100);
        EXPECT_EQ(check().status, 1);
    }
}

}  // namespace
}  // namespace orvane::test
