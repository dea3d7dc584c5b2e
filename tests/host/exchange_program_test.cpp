#include <fcntl.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "tests/host/program.h"
#include "tests/persistence/temporary_folder.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

class ExchangeProgram : public testing::Test {
  protected:
    std::vector<std::string> withStore(std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(), {"--store", folder_ / "store"});
        return arguments;
    }
    ProgramRun run(std::vector<std::string> arguments) const {
        return runProgram(withStore(std::move(arguments)));
    }
    void fill() {
        writeBytes(
            folder_ / "rows.csv",
            "start,end,window,name\n1772438400,1772438460,\"a, b\",App\n1772524800,1772524900,c,App\n");
        ASSERT_EQ(run({"import", folder_ / "rows.csv"}).status, 0);
    }
    std::vector<std::string> filesIn(const fs::path& folder) const {
        std::vector<std::string> result;
        for (const auto& entry : fs::directory_iterator(folder)) result.push_back(entry.path().filename());
        std::sort(result.begin(), result.end());
        return result;
    }

    TemporaryFolder folder_;
};

TEST_F(ExchangeProgram, ExportsAndImports) {
    fill();
    const std::string csv = run({"export", "--format", "csv", "2026-03-03"}).output;
    EXPECT_EQ(csv,
              "start,end,idle,window,application,identifier,name,color,disabled,group,group_identifier,"
              "group_name,group_category,group_color,group_disabled\r\n"
              "1772524800,1772524900,,c,1,,App,,,,,,,,\r\n");
    const auto summary = run({"export", "--output", folder_ / "all.jsonl", "--json"}).json();
    EXPECT_EQ(summary, nlohmann::json::parse(R"({"recordings":2,"applications":1,"groups":0})"));
    EXPECT_EQ(bytesOf(folder_ / "all.jsonl"), run({"export"}).output);

    const auto report = run({"import", folder_ / "all.jsonl", "--json"}).json();
    EXPECT_EQ(report["taken"], 0);
    EXPECT_EQ(report["leftOut"]["alreadyStored"], 2);
    EXPECT_EQ(run({"import", folder_ / "rows.csv"}).output,
              "Took 0 recordings.\nLeft out 2: stored already.\n");
}

TEST_F(ExchangeProgram, ReplacesFilesOnlyWhenToldTo) {
    fill();
    const fs::path out = folder_ / "out";
    fs::create_directory(out);
    writeBytes(out / "kept.csv", "kept");
    fs::create_symlink("kept.csv", out / "link.csv");
    const ProgramRun refused = run({"export", "--output", out / "link.csv"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.errors.find("exists already"), std::string::npos) << refused.errors;
    EXPECT_EQ(bytesOf(out / "kept.csv"), "kept");

    EXPECT_EQ(run({"export", "--output", out / "link.csv", "--force"}).status, 0);
    EXPECT_TRUE(fs::is_symlink(out / "link.csv"));
    EXPECT_TRUE(bytesOf(out / "kept.csv").starts_with("start,"));
    EXPECT_EQ(fs::status(out / "kept.csv").permissions(), fs::perms::owner_read | fs::perms::owner_write);

    EXPECT_EQ(run({"export", "--output", "/dev/null", "--format", "csv", "--force"}).status, 1);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_EQ(run({"export", "--output", out / "missing" / "x.csv"}).status, 1);
    EXPECT_EQ(filesIn(out), (std::vector<std::string>{"kept.csv", "link.csv"}));
}

TEST_F(ExchangeProgram, AFullDiskLeavesEverythingAsItWas) {
    fill();
    const std::string before = run({"export"}).output;
    std::string rows = "start,end,window,identifier,group_name\n";
    for (int i = 0; i < 30000; ++i)
        rows += std::to_string(i) + "," + std::to_string(i + 1) + ",window " + std::to_string(i) +
                ",org.other,G\n";
    writeBytes(folder_ / "many.csv", rows);
    // No file may grow beyond half a megabyte: the failure comes in the middle of writing.
    const auto limited = [&](const std::string& arguments) {
        return runShell("trap '' XFSZ; ulimit -f 1000; \"$0\" " + arguments + " --store \"$1/store\"",
                        folder_.path());
    };
    const ProgramRun failed = limited("import \"$1/many.csv\"");
    EXPECT_EQ(failed.status, 1);
    EXPECT_NE(failed.errors.find("Nothing was imported."), std::string::npos) << failed.errors;
    EXPECT_EQ(run({"export"}).output, before);
    EXPECT_EQ(runShell("trap '' XFSZ; ulimit -f 200; \"$0\" import \"$1/many.csv\" --store \"$1/new\"",
                       folder_.path())
                  .status,
              1);
    EXPECT_EQ(filesIn(folder_ / "new"), std::vector<std::string>{"tracker.lock"});
    EXPECT_EQ(run({"import", folder_ / "many.csv", "--json"}).json()["taken"], 30000);

    fs::create_directory(folder_ / "out");
    EXPECT_EQ(limited("export --output \"$1/out/export.csv\"").status, 1);
    EXPECT_EQ(filesIn(folder_ / "out"), std::vector<std::string>());
    for (const std::string command : {"export", "report all", "apps --json", "check"}) {
        const ProgramRun told =
            runShell("\"$0\" " + command + " --store \"$1/store\" >/dev/full", folder_.path());
        EXPECT_EQ(told.status, 1) << command;
        EXPECT_NE(told.errors.find("Standard output cannot be written"), std::string::npos) << told.errors;
    }
}

TEST_F(ExchangeProgram, RefusesWhatItCannotRead) {
    writeBytes(folder_ / "bad.jsonl",
               "{\"type\":\"export\",\"version\":1}\n{\"type\":\"recording\",\"start\":1}\n{]\n");
    writeBytes(folder_ / "noname", "");
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{"import", folder_ / "bad.jsonl"}, "bad.jsonl:3: no JSON"},
        {{"import", folder_ / "missing.csv"}, "missing.csv\" cannot be read: No such file"},
        {{"import", folder_.path(), "--format", "csv"}, "cannot be read: Is a directory"},
        {{"import", folder_ / "noname"}, "tells no format"},
        {{"import", folder_ / "bad.jsonl", "--format", "jsnl"}, "Did you mean \"jsonl\"?"},
        {{"import", folder_ / "bad.jsonl", "--format", "buckets"}, "bad.jsonl:2: the file is no JSON"},
        {{"export", "--format", "buckets"}, "no format to export in"},
        {{"export", "--output", folder_ / "x.json"}, "tells no format"},
        {{"export", "yesterdy"}, "Did you mean \"yesterday\"?"}};
    for (const auto& [arguments, message] : cases) {
        const ProgramRun refused = run(arguments);
        EXPECT_EQ(refused.status, 2) << message;
        EXPECT_NE(refused.errors.find(message), std::string::npos) << refused.errors;
    }
    // None of it made a store.
    EXPECT_FALSE(fs::exists(folder_ / "store"));
}

TEST_F(ExchangeProgram, AnInterruptionLeavesTheStoreAsItWas) {
    for (const bool exists : {false, true}) {
        if (exists) fill();
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            const fs::path pipe = folder_ / ("pipe" + std::to_string(signal) + (exists ? "b" : "a"));
            ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
            Program program(withStore({"import", pipe, "--format", "jsonl"}));
            // Opening returns once the program has opened the other end, which it does when it is ready.
            const int descriptor = ::open(pipe.c_str(), O_WRONLY | O_CLOEXEC);
            const std::string_view lines =
                "{\"type\":\"export\",\"version\":1}\n{\"type\":\"recording\",\"start\":1,\"end\":2}\n";
            ASSERT_EQ(::write(descriptor, lines.data(), lines.size()), static_cast<ssize_t>(lines.size()));
            program.signal(signal);
            const ProgramRun interrupted = program.finish();
            ::close(descriptor);
            EXPECT_EQ(interrupted.status, 1);
            EXPECT_EQ(interrupted.errors, "orvane: interrupted; nothing was imported.\n");
            EXPECT_EQ(fs::exists(folder_ / "store"), exists);
        }
    }
    EXPECT_EQ(run({"export", "--json"}).output.find("\"start\":1.0"), std::string::npos);
}

TEST_F(ExchangeProgram, ABusyOrBrokenStoreTakesNothing) {
    fill();
    writeBytes(folder_ / "more.csv", "start,end\n1,2\n");
    const std::string before = run({"export"}).output;
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open((folder_ / "store/Orvaning.db").c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    const ProgramRun busy = run({"import", folder_ / "more.csv"});
    EXPECT_EQ(busy.status, 1);
    EXPECT_NE(busy.errors.find("is in use by another program"), std::string::npos) << busy.errors;
    sqlite3_close(other);
    EXPECT_EQ(run({"export"}).output, before);

    writeBytes(folder_ / "store/Orvaning.db", "no database, and a few more bytes of it");
    EXPECT_EQ(run({"import", folder_ / "more.csv"}).status, 1);
    EXPECT_EQ(run({"export", "--output", folder_ / "out.csv"}).status, 1);
    EXPECT_FALSE(fs::exists(folder_ / "out.csv"));
    EXPECT_EQ(bytesOf(folder_ / "store/Orvaning.db").substr(0, 11), "no database");
}

}  // namespace
}  // namespace orvane::test
