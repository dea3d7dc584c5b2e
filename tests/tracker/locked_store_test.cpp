#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <ostream>

#include "persistence/persistence_errors.h"
#include "store/orvane_app.h"
#include "tests/persistence/temporary_folder.h"
#include "trials/desk.h"
#include "trials/store_contents.h"

namespace orvane::trials {
namespace {

/// Another program that holds a lock on the store while this lives.
class OtherProgram {
  public:
    OtherProgram(const std::filesystem::path& file, const char* begin) {
        EXPECT_EQ(sqlite3_open(file.c_str(), &database_), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database_, begin, nullptr, nullptr, nullptr), SQLITE_OK);
    }
    ~OtherProgram() { sqlite3_close(database_); }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

  private:
    sqlite3* database_ = nullptr;
};

struct Lock {
    const char* name;
    const char* begin;
};

void PrintTo(const Lock& lock, std::ostream* stream) { *stream << lock.name; }

class LockedStore : public testing::TestWithParam<Lock> {
  protected:
    /// A tracker that knows three applications, the last of which is switched off.
    void begin(Desk& desk) {
        for (const char* application : {"org.example.Secret", "org.example.Mail", "org.example.Editor"}) {
            desk.show(application, "first");
            if (desk.tracker().enabled().isNone())
                desk.tracker().setEnabled(true);
            else
                desk.pass(10);
        }
        OrvaneManagedObjectContext& context = *desk.context();
        for (const auto& app : context.fetch<OrvaneApp>({std::string(OrvaneApp::entityName())}))
            if (app->identifier() == "org.example.Secret") app->setDisabled(true);
        ASSERT_TRUE(context.save());
    }

    /// A host reads the application anew before every poll, in case another program switched it off.
    static void readAnew(Desk& desk) {
        const Ref<OrvaneRecording>& recording = desk.tracker().currentRecording();
        if (const auto app = recording ? recording->application() : nullptr)
            desk.context()->refreshObject(*app, true);
    }

    /// What the user does in a minute.
    static void work(Desk& desk) {
        const auto use = [&](const char* application, const char* window, double seconds) {
            desk.show(application, window);
            readAnew(desk);
            desk.activate();
            desk.pass(seconds);
        };
        desk.pass(10);
        use("org.example.Editor", "first", 3);
        use("org.example.Mail", "inbox", 7);
        use("org.example.New", "welcome", 20);
        use("org.example.Secret", "diary", 5);
        use("org.example.New", "welcome", 2);
        desk.sleep();
        desk.pass(1);
        use("org.example.Mail", "inbox", 12);
        desk.platform().workspace().setFrontmostApplication(std::nullopt);
        desk.pass(10);
    }

    StoreContents contentsAfter(const std::optional<Lock>& lock) {
        const test::TemporaryFolder folder;
        const std::filesystem::path file = folder / "Orvaning.db";
        Desk desk(folder.path(), {});
        begin(desk);
        {
            std::optional<OtherProgram> other;
            if (lock) other.emplace(file, lock->begin);
            work(desk);
        }
        desk.show("org.example.Mail", "inbox");
        readAnew(desk);
        desk.pass(10);
        EXPECT_TRUE(desk.errors().empty());
        EXPECT_FALSE(desk.context()->hasChanges());
        return readStore(file, {});
    }
};

TEST_P(LockedStore, IsCaughtUpWithWhenTheLockIsFree) {
    const StoreContents expected = contentsAfter(std::nullopt);
    const StoreContents found = contentsAfter(GetParam());
    EXPECT_EQ(found.text, expected.text);
    EXPECT_EQ(found.doubledApplications, "");
    EXPECT_EQ(found.text.find("diary"), std::string::npos);
}

TEST_P(LockedStore, HardlyHoldsUpTheMainLoop) {
    using Clock = std::chrono::steady_clock;
    Clock::duration shortest = Clock::duration::max();
    // Several, for a busy machine may hold up one.
    for (int attempt = 0; attempt < 5; ++attempt) {
        const test::TemporaryFolder folder;
        Desk desk(folder.path(), {});
        begin(desk);
        const OtherProgram other(folder / "Orvaning.db", GetParam().begin);
        desk.show("org.example.New", "welcome");
        readAnew(desk);
        const auto before = Clock::now();
        desk.activate();
        shortest = std::min(shortest, Clock::now() - before);
    }
    EXPECT_LT(shortest, std::chrono::milliseconds(100));
}

TEST_P(LockedStore, KeepsWhatHostsChanged) {
    const test::TemporaryFolder folder;
    Desk desk(folder.path(), {});
    begin(desk);
    const auto app = desk.tracker().currentRecording()->application();
    {
        const OtherProgram other(folder / "Orvaning.db", GetParam().begin);
        app->setName("renamed");
        Error error;
        EXPECT_FALSE(desk.context()->save(&error));
        EXPECT_EQ(error.code(), storeLockedError);
    }
    desk.pass(10);
    EXPECT_NE(readStore(folder / "Orvaning.db", {}).text.find("org.example.Editor renamed"),
              std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Locks, LockedStore,
                         testing::Values(Lock{"Exclusive", "BEGIN EXCLUSIVE"},
                                         Lock{"ForWriting", "BEGIN IMMEDIATE"},
                                         Lock{"ForReading", "BEGIN; SELECT count(*) FROM Recording"}),
                         [](const auto& lock) { return std::string(lock.param.name); });

}  // namespace
}  // namespace orvane::trials
