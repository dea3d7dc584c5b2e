#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <set>
#include <stdexcept>
#include <vector>

#include "platform/simulated/unreliable_disk.h"

namespace orvane {
namespace {

struct Close {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};
using Database = std::unique_ptr<sqlite3, Close>;

class UnreliableDiskTest : public testing::Test {
  protected:
    ~UnreliableDiskTest() override { std::filesystem::remove_all(folder_); }

    Database open() {
        sqlite3* handle = nullptr;
        sqlite3_open_v2((folder_ / "test.db").c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                        disk_.name().c_str());
        return Database(handle);
    }
    static int run(const Database& database, const char* sql) {
        return sqlite3_exec(database.get(), sql, nullptr, nullptr, nullptr);
    }
    /// The sum of all rows; minus one when it cannot be told.
    static int sum(const Database& database) {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(database.get(), "SELECT total(x) FROM t", -1, &statement, nullptr);
        const int result = sqlite3_step(statement) == SQLITE_ROW ? sqlite3_column_int(statement, 0) : -1;
        sqlite3_finalize(statement);
        return result;
    }
    Database filled() {
        Database database = open();
        EXPECT_EQ(run(database, "PRAGMA synchronous = EXTRA; CREATE TABLE t (x); INSERT INTO t VALUES (1)"),
                  SQLITE_OK);
        return database;
    }
    static std::filesystem::path makeFolder() {
        std::string pattern = std::filesystem::temp_directory_path() / "orvane-disk-XXXXXX";
        return mkdtemp(pattern.data());
    }

    std::filesystem::path folder_ = makeFolder();
    UnreliableDisk disk_{folder_.string()};
};

TEST_F(UnreliableDiskTest, LosesWhatIsUnsyncedInMoreThanOneWay) {
    Database database = filled();
    ASSERT_EQ(run(database, "PRAGMA synchronous = OFF; INSERT INTO t VALUES (2)"), SQLITE_OK);
    std::set<UnreliableDisk::Files> outcomes;
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        outcomes.insert(disk_.afterPowerCut(seed));
        EXPECT_EQ(disk_.afterPowerCut(seed), disk_.afterPowerCut(seed));
    }
    EXPECT_GT(outcomes.size(), 10U);
    // What stands in the file is all there for those to whom the power does not go.
    EXPECT_EQ(sum(open()), 3);
}

TEST_F(UnreliableDiskTest, KeepsWhatIsSynced) {
    Database database = filled();
    ASSERT_EQ(run(database, "INSERT INTO t VALUES (2)"), SQLITE_OK);
    database.reset();
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        disk_.setSeed(seed);
        disk_.cutPower();
        disk_.powerOn();
        ASSERT_EQ(sum(open()), 3);
    }
}

TEST_F(UnreliableDiskTest, LosesItsPowerAtAnyOperationWithATransactionWholeOrNotAtAll) {
    std::set<int> sums;
    for (std::uint64_t operation = 1;; ++operation) {
        disk_.setFiles({});
        Database database = filled();
        disk_.setSeed(operation);
        disk_.failAt(disk_.operations() + operation, DiskFault::powerCut);
        const int result = run(database, "UPDATE t SET x = 5");
        if (disk_.hasPower()) break;
        EXPECT_NE(result, SQLITE_OK);
        EXPECT_EQ(sum(database), -1);
        EXPECT_EQ(sum(open()), -1);
        EXPECT_THROW(disk_.powerOn(), std::logic_error);
        database.reset();
        disk_.powerOn();
        sums.insert(sum(open()));
    }
    EXPECT_EQ(sums, (std::set<int>{1, 5}));
}

TEST_F(UnreliableDiskTest, FailsAtOneOperationAndCutsItShort) {
    for (const DiskFault fault : {DiskFault::fails, DiskFault::cutShort}) {
        std::vector<DiskOperation> seen;
        for (std::uint64_t operation = 1;; ++operation) {
            disk_.setFiles({});
            const Database database = filled();
            seen.clear();
            const std::uint64_t before = disk_.operations();
            disk_.setObserver([&](const DiskOperation& asked) { seen.push_back(asked); });
            disk_.failAt(before + operation, fault);
            run(database, "UPDATE t SET x = 5");
            disk_.setObserver(nullptr);
            disk_.failAt(0, fault);
            if (disk_.operations() < before + operation) break;
            EXPECT_EQ(run(database, "UPDATE t SET x = 7"), SQLITE_OK);
            EXPECT_EQ(sum(open()), 7);
        }
        // The last run was one without a failure.
        ASSERT_FALSE(seen.empty());
        EXPECT_EQ(seen.back().kind, FileOperation::remove);
        EXPECT_TRUE(seen.back().onJournal);
    }
}

}  // namespace
}  // namespace orvane
