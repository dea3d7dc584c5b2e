#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>

#include "persistence/persistence_errors.h"
#include "store/orvane_app.h"
#include "tests/persistence/temporary_folder.h"
#include "trials/desk.h"
#include "trials/store_contents.h"

namespace orvane::trials {
namespace {

namespace fs = std::filesystem;

/// A tracker that has recorded 20 seconds of "letter".
class LostStore : public testing::Test {
  protected:
    LostStore() {
        desk_.show("org.example.Editor", "letter");
        desk_.tracker().setEnabled(true);
        desk_.pass(20);
    }

    static std::string row(double start, double end, const std::string& window) {
        constexpr double epoch = 1'772'438'400;
        return "recording " + std::to_string(static_cast<std::int64_t>(epoch + start)) + ".0 " +
               std::to_string(static_cast<std::int64_t>(epoch + end)) + ".0 0 org.example.Editor " + window +
               "\n";
    }
    /// The recordings that a file holds, in order.
    static std::string recordings(const fs::path& file) {
        const StoreContents contents = readStore(file, {});
        EXPECT_EQ(contents.integrity, "ok");
        EXPECT_EQ(contents.doubledApplications, "");
        return contents.text.substr(0, contents.text.find("application "));
    }
    std::vector<int> shown() const {
        std::vector<int> codes;
        for (const Error& error : desk_.errors()) codes.push_back(error.code());
        return codes;
    }

    test::TemporaryFolder folder_;
    fs::path store_ = folder_ / "store";
    fs::path file_ = store_ / "Orvaning.db";
    Desk desk_{store_, {}};
};

TEST_F(LostStore, OnAFullDiskIsCaughtUpWithOnceThereIsRoom) {
    desk_.platform().fileManager().failingFileSystem().setWritesFail(true);
    desk_.pass(15);
    desk_.show("org.example.Editor", "plan");
    desk_.pass(25);
    EXPECT_EQ(recordings(file_), row(0, 20, "letter"));
    desk_.platform().fileManager().failingFileSystem().setWritesFail(false);
    desk_.pass(10);
    EXPECT_EQ(recordings(file_), row(0, 40, "letter") + row(40, 70, "plan"));
    EXPECT_TRUE(desk_.errors().empty());
}

TEST_F(LostStore, InAFolderWithoutPermissionIsCaughtUpWith) {
    const test::PermissionsBind bind;
    for (const fs::perms closed : {fs::perms::none, fs::perms::owner_read | fs::perms::owner_exec}) {
        fs::permissions(store_, closed);
        desk_.pass(20);
        fs::permissions(store_, fs::perms::owner_all);
    }
    EXPECT_EQ(recordings(file_), row(0, 20, "letter"));
    desk_.pass(10);
    EXPECT_EQ(recordings(file_), row(0, 70, "letter"));
    EXPECT_TRUE(desk_.errors().empty());
}

TEST_F(LostStore, ThatBecameReadOnlyIsWrittenUntilTheTrackerEnds) {
    const test::PermissionsBind bind;
    fs::permissions(file_, fs::perms::owner_read);
    desk_.pass(10);
    EXPECT_EQ(recordings(file_), row(0, 30, "letter"));
    EXPECT_TRUE(desk_.errors().empty());

    Desk next(store_, {});
    next.platform().clock().stepWallTime(std::chrono::hours(1));
    next.show("org.example.Editor", "plan");
    next.tracker().setEnabled(true);
    ASSERT_EQ(next.errors().size(), 2U);
    EXPECT_EQ(next.errors()[0].code(), storeReadOnlyError);
    EXPECT_EQ(next.errors()[1].code(), storeNotInitializedError);
    EXPECT_EQ(recordings(file_), row(0, 30, "letter"));
    // Tracking goes on with the next change of the application once the file may be written.
    fs::permissions(file_, fs::perms::owner_read | fs::perms::owner_write);
    next.activate();
    EXPECT_EQ(recordings(file_), row(0, 30, "letter") + row(3600, 3600, "plan"));
}

TEST_F(LostStore, ThatWasDeletedIsMadeAnew) {
    for (const bool withFolder : {false, true}) {
        fs::remove_all(withFolder ? store_ : file_);
        const auto before = desk_.errors().size();
        desk_.pass(20);
        ASSERT_EQ(desk_.errors().size(), before + 1);
        EXPECT_EQ(desk_.errors().back().code(), storeInputOutputError);
        const double now = static_cast<double>(desk_.platform().clock().time().count()) / 1e6;
        EXPECT_EQ(recordings(file_), row(now - 10, now, "letter"));
        struct stat status {};
        ASSERT_EQ(stat(file_.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0600U);
    }
}

TEST_F(LostStore, ThatWasMovedAwayIsNotWrittenAnyMore) {
    fs::rename(file_, folder_ / "elsewhere.db");
    const std::string before = test::bytesOf(folder_ / "elsewhere.db");
    desk_.show("org.example.Editor", "plan");
    desk_.pass(20);
    EXPECT_EQ(test::bytesOf(folder_ / "elsewhere.db"), before);
    EXPECT_EQ(recordings(file_), row(30, 40, "plan"));
    EXPECT_EQ(shown(), std::vector<int>{storeInputOutputError});
}

TEST_F(LostStore, ThatWasReplacedIsTheOneToGoOnWith) {
    // A copy of earlier, put in its place as tools for backups do it.
    fs::copy_file(file_, folder_ / "backup.db");
    desk_.pass(20);
    fs::rename(folder_ / "backup.db", file_);
    desk_.show("org.example.Editor", "plan");
    desk_.pass(20);
    EXPECT_EQ(recordings(file_), row(0, 20, "letter") + row(50, 60, "plan"));
    EXPECT_EQ(shown(), std::vector<int>{storeInputOutputError});
}

TEST_F(LostStore, ThatWasReplacedIsStillThatOfChildContexts) {
    const auto names = [](ManagedObjectContext& context) {
        std::string result;
        for (const auto& app : context.fetch<OrvaneApp>({std::string(OrvaneApp::entityName())}))
            result += std::string(app->name().value_or("-")) + " ";
        return result;
    };
    const Ref<OrvaneApp> held = desk_.tracker().currentRecording()->application();
    ManagedObjectContext child(ConcurrencyType::mainQueue);
    child.setParentContext(desk_.context());
    const auto childsApp = child.fetch<OrvaneApp>({std::string(OrvaneApp::entityName())}).front();
    fs::remove(file_);
    desk_.show("org.example.Mail", "inbox");
    desk_.pass(10);
    EXPECT_FALSE(held->isUsable());
    EXPECT_EQ(names(*desk_.context()), "org.example.Mail ");
    // Its key is that of another application by now.
    childsApp->setName("renamed");
    EXPECT_TRUE(child.save());
    desk_.pass(10);
    EXPECT_EQ(names(*desk_.context()), "org.example.Mail ");
}

TEST_F(LostStore, ThatIsNoticedByTheEndOfTrackingIsNotWrittenEither) {
    fs::remove(file_);
    desk_.sleep();
    EXPECT_EQ(shown(), std::vector<int>{storeInputOutputError});
    EXPECT_EQ(readStore(file_, {}).recordings, 0);
    desk_.activate();
    desk_.pass(10);
    EXPECT_EQ(recordings(file_), row(20, 30, "letter"));
}

TEST_F(LostStore, ThatWasReplacedByAnotherKindOfFileIsLeftAlone) {
    fs::remove(file_);
    const std::string text =
        "a letter to a friend, long enough to be looked at as if it were a database ……………";
    test::writeBytes(file_, text);
    desk_.pass(30);
    EXPECT_EQ(shown(), (std::vector<int>{storeInputOutputError, storeNotDatabaseError}));
    EXPECT_EQ(test::bytesOf(file_), text);
    // With the file out of the way the next change of the application starts tracking again.
    fs::remove(file_);
    desk_.activate();
    desk_.pass(10);
    EXPECT_EQ(recordings(file_), row(50, 60, "letter"));
}

}  // namespace
}  // namespace orvane::trials
