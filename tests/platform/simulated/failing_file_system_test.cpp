#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <memory>

#include "platform/simulated/failing_file_system.h"

namespace orvane {
namespace {

struct Close {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};
using Database = std::unique_ptr<sqlite3, Close>;

/// On the disk, and in memory where the parameter is true.
class FailingFiles : public testing::TestWithParam<bool> {
  protected:
    void SetUp() override {
        std::string pattern = std::filesystem::temp_directory_path() / "orvane-disk-XXXXXX";
        folder_ = mkdtemp(pattern.data());
        if (GetParam()) disk_.keepInMemory(folder_);
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    Database open(int* result = nullptr) {
        sqlite3* handle = nullptr;
        int code = sqlite3_open_v2((folder_ / "test.db").c_str(), &handle,
                                   SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, disk_.name().c_str());
        Database database(handle);
        if (result) *result = code;
        return code == SQLITE_OK ? std::move(database) : nullptr;
    }
    static int run(const Database& database, const char* sql) {
        return sqlite3_exec(database.get(), sql, nullptr, nullptr, nullptr);
    }
    /// Number of rows, or minus the error's code.
    static int rows(const Database& database) {
        sqlite3_stmt* statement = nullptr;
        int result = sqlite3_prepare_v2(database.get(), "SELECT count(*) FROM t", -1, &statement, nullptr);
        if (result == SQLITE_OK) result = sqlite3_step(statement);
        const int count = result == SQLITE_ROW ? sqlite3_column_int(statement, 0) : -result;
        sqlite3_finalize(statement);
        return count;
    }
    Database filled() {
        Database database = open();
        EXPECT_EQ(run(database, "CREATE TABLE t (x); INSERT INTO t VALUES (1), (2)"), SQLITE_OK);
        return database;
    }

    std::filesystem::path folder_;
    FailingFileSystem disk_;
};

TEST_P(FailingFiles, OpeningFailsWhileAnyOfTheThreeDoes) {
    filled();
    for (const auto set : {&FailingFileSystem::setOpenFails, &FailingFileSystem::setReadsFail,
                           &FailingFileSystem::setWritesFail}) {
        int result = SQLITE_OK;
        (disk_.*set)(true);
        EXPECT_EQ(open(&result), nullptr);
        EXPECT_EQ(result, SQLITE_CANTOPEN);
        (disk_.*set)(false);
        EXPECT_EQ(rows(open()), 2);
    }
}

TEST_P(FailingFiles, AnOpenDatabaseStaysOpen) {
    const Database database = filled();
    disk_.setOpenFails(true);
    EXPECT_EQ(rows(database), 2);
    EXPECT_EQ(run(database, "INSERT INTO t VALUES (3)"), SQLITE_OK);
    EXPECT_EQ(rows(open()), 3);
}

TEST_P(FailingFiles, FailingReadsFailEveryAnswerAndEverySave) {
    const Database database = filled();
    EXPECT_EQ(rows(database), 2);
    disk_.setReadsFail(true);
    // The pages are in memory by now; the check whether they still hold is a read.
    EXPECT_LT(rows(database), 0);
    EXPECT_NE(run(database, "INSERT INTO t VALUES (3)"), SQLITE_OK);
    disk_.setReadsFail(false);
    EXPECT_EQ(rows(database), 2);
    EXPECT_EQ(run(database, "INSERT INTO t VALUES (3)"), SQLITE_OK);
}

TEST_P(FailingFiles, FailingWritesLeaveTheFileAsItWasAndReadable) {
    const Database database = filled();
    disk_.setWritesFail(true);
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_NE(run(database, "BEGIN IMMEDIATE; INSERT INTO t VALUES (3); COMMIT"), SQLITE_OK);
        run(database, "ROLLBACK");
        EXPECT_EQ(rows(database), 2);
    }
    disk_.setWritesFail(false);
    EXPECT_EQ(run(database, "BEGIN IMMEDIATE; INSERT INTO t VALUES (3); COMMIT"), SQLITE_OK);
    EXPECT_EQ(rows(database), 3);
}

TEST_P(FailingFiles, ADiskThatFillsUpInsideATransactionCanBeRolledBack) {
    const Database database = filled();
    ASSERT_EQ(run(database, "BEGIN IMMEDIATE; INSERT INTO t VALUES (3)"), SQLITE_OK);
    disk_.setWritesFail(true);
    EXPECT_NE(run(database, "COMMIT"), SQLITE_OK);
    run(database, "ROLLBACK");
    disk_.setWritesFail(false);
    EXPECT_EQ(rows(database), 2);
    EXPECT_EQ(rows(open()), 2);
}

TEST_P(FailingFiles, EachIsRegisteredUnderItsOwnName) {
    std::string name;
    {
        FailingFileSystem other;
        name = other.name();
        EXPECT_NE(name, disk_.name());
        EXPECT_NE(sqlite3_vfs_find(name.c_str()), nullptr);
        other.setReadsFail(true);
        EXPECT_EQ(rows(filled()), 2);
    }
    EXPECT_EQ(sqlite3_vfs_find(name.c_str()), nullptr);
}

TEST_P(FailingFiles, OneConnectionWritesAtATime) {
    const Database writer = filled();
    const Database other = open();
    ASSERT_EQ(run(writer, "BEGIN IMMEDIATE; INSERT INTO t VALUES (3)"), SQLITE_OK);
    EXPECT_EQ(rows(other), 2);
    EXPECT_EQ(run(other, "BEGIN IMMEDIATE"), SQLITE_BUSY);

    // A reader in the middle of its rows holds the writer up, and the writer new readers.
    ASSERT_EQ(run(other, "BEGIN; SELECT * FROM t"), SQLITE_OK);
    EXPECT_EQ(run(writer, "COMMIT"), SQLITE_BUSY);
    EXPECT_EQ(rows(open()), -SQLITE_BUSY);
    ASSERT_EQ(run(other, "COMMIT"), SQLITE_OK);
    EXPECT_EQ(run(writer, "COMMIT"), SQLITE_OK);
    EXPECT_EQ(rows(other), 3);
    EXPECT_EQ(rows(open()), 3);
}

TEST_P(FailingFiles, GrowsAndShrinks) {
    const Database database = open();
    ASSERT_EQ(run(database, "CREATE TABLE t (x); BEGIN"), SQLITE_OK);
    for (int row = 0; row < 40; ++row)
        ASSERT_EQ(run(database, "INSERT INTO t VALUES (randomblob(100000))"), SQLITE_OK);
    ASSERT_EQ(run(database, "COMMIT; DELETE FROM t WHERE rowid % 2; VACUUM; INSERT INTO t VALUES (1)"),
              SQLITE_OK);
    EXPECT_EQ(rows(open()), 21);
    EXPECT_EQ(run(database, "PRAGMA integrity_check"), SQLITE_OK);
}

TEST_P(FailingFiles, LieWhereTheyShould) {
    filled();
    EXPECT_EQ(std::filesystem::exists(folder_ / "test.db"), !GetParam());
    EXPECT_EQ(rows(open()), 2);
}

INSTANTIATE_TEST_SUITE_P(OnDiskAndInMemory, FailingFiles, testing::Bool(),
                         [](const auto& inMemory) { return inMemory.param ? "InMemory" : "OnDisk"; });

}  // namespace
}  // namespace orvane
