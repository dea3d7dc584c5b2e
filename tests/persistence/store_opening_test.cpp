#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "persistence/persistence_errors.h"
#include "persistence/sqlite/schema.h"
#include "tests/persistence/small_disk.h"
#include "tests/persistence/temporary_folder.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

std::shared_ptr<const ManagedObjectModel> modelOf(const std::string& name, int version,
                                                  const char* more = "") {
    Error error;
    auto model = ManagedObjectModel::modelWithText(R"({"name": ")" + name + R"(", "version": )" +
                                                       std::to_string(version) + R"(, "entities": [
            {"name": "Item", "attributes": [{"name": "title", "type": "text"}, {"name": "from", "type": "date"},
                                            {"name": "till", "type": "date"}],
             "relationships": [{"name": "box", "destination": "Box", "inverse": "items"}],
             "indexes": [["box", "from"]], "intervals": [{"start": "from", "end": "till"}]},
            {"name": "Box", "relationships": [
                {"name": "items", "destination": "Item", "inverse": "box", "toMany": true}]})" +
                                                       more + "]}",
                                                   "test", &error);
    EXPECT_TRUE(model) << error.localizedDescription();
    return model;
}

class StoreOpening : public testing::Test {
  protected:
    StoreOpening() {
        options_.open.create = true;
        options_.open.busyTimeoutMilliseconds = 1;
    }

    std::optional<sqlite::PreparedStore> open() { return open(file_); }
    std::optional<sqlite::PreparedStore> open(const fs::path& file) {
        error_ = Error();
        return sqlite::prepareStore(file, *model_, options_, &error_);
    }
    /// Code of the error with which opening fails; the file must be as before.
    int refusal() {
        const std::string before = bytesOf(file_);
        EXPECT_FALSE(open());
        EXPECT_TRUE(bytesOf(file_) == before) << "the file was changed";
        EXPECT_EQ(error_.domain(), persistenceErrorDomain);
        return error_.code();
    }
    void create() { ASSERT_TRUE(open()) << error_.localizedDescription(); }
    void createWithRows() {
        create();
        runSQL(file_, R"(WITH RECURSIVE n(i) AS (VALUES (1) UNION ALL SELECT i + 1 FROM n WHERE i < 200)
                         INSERT INTO Item SELECT i, 'title ' || i, i, i + 1, 1 FROM n; INSERT INTO Box VALUES (1))");
    }

    TemporaryFolder folder_;
    fs::path file_ = folder_ / "Items.db";
    std::shared_ptr<const ManagedObjectModel> model_ = modelOf("Test", 2);
    sqlite::PrepareOptions options_;
    Error error_;
};

TEST_F(StoreOpening, CreatesAPrivateFileAndFindsItAgainUnchanged) {
    const mode_t mask = ::umask(0);
    auto store = open();
    ::umask(mask);
    ASSERT_TRUE(store) << error_.localizedDescription();
    EXPECT_EQ(fs::status(file_).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(store->storeIdentifier.size(), 36U);
    const std::string identifier = store->storeIdentifier;
    store.reset();
    EXPECT_EQ(runSQL(file_, "PRAGMA application_id; PRAGMA user_version; PRAGMA journal_mode"),
              std::to_string(0x4F72766E) + " 1 delete");
    EXPECT_EQ(runSQL(file_, "SELECT name FROM sqlite_schema WHERE sql IS NOT NULL ORDER BY name"),
              "Box Item Item:box,from Item:from>till _keys _metadata");
    const std::string before = bytesOf(file_);
    store = open();
    ASSERT_TRUE(store) << error_.localizedDescription();
    EXPECT_EQ(store->storeIdentifier, identifier);
    store.reset();
    EXPECT_TRUE(bytesOf(file_) == before);
}

TEST_F(StoreOpening, AnEmptyFileBecomesAStoreOnlyWhenAskedTo) {
    writeBytes(file_, "");
    options_.open.create = false;
    EXPECT_EQ(refusal(), storeCannotOpenError);
    options_.open.create = true;
    create();
}

TEST_F(StoreOpening, AFileCutShortIsDamagedAtEverySector) {
    createWithRows();
    const std::string whole = bytesOf(file_);
    ASSERT_GT(whole.size(), 40U * 512);
    for (std::size_t length = 512; length < whole.size(); length += 512) {
        writeBytes(file_, std::string_view(whole).substr(0, length));
        EXPECT_EQ(refusal(), storeCorruptError) << length << ": " << error_.localizedFailureReason();
    }
    writeBytes(file_, whole);
    create();
}

TEST_F(StoreOpening, WhatAnInterruptedTransactionLeftIsPutBackFirst) {
    createWithRows();
    const std::string before = bytesOf(file_);
    const pid_t child = ::fork();
    if (child == 0) {
        // With next to no cache the changes reach the file at once; then the process ends without a word.
        sqlite3* database = nullptr;
        sqlite3_open(file_.c_str(), &database);
        sqlite3_exec(database,
                     "PRAGMA cache_size = 1; BEGIN; UPDATE Item SET title = title || hex(zeroblob(2000)); "
                     "DROP TABLE Box",
                     nullptr, nullptr, nullptr);
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_FALSE(bytesOf(file_) == before);
    create();
    EXPECT_TRUE(bytesOf(file_) == before);
}

TEST_F(StoreOpening, WhatIsNoDatabaseFileIsRefusedForWhatItIs) {
    for (const std::string& text : {std::string("x"), std::string("Dear diary,\n"), std::string(5000, '\0'),
                                    std::string("SQLite format 3"), std::string(70000, 'q')}) {
        writeBytes(file_, text);
        EXPECT_EQ(refusal(), storeNotDatabaseError) << text.size();
    }
    fs::remove(file_);
    fs::create_directory(file_);
    EXPECT_FALSE(open());
    EXPECT_EQ(error_.code(), storeCannotOpenError);
    EXPECT_NE(error_.localizedDescription().find("a folder stands"), std::string::npos);
    fs::remove(file_);
    ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
    EXPECT_FALSE(open());
    EXPECT_EQ(error_.code(), storeCannotOpenError);
    fs::remove(file_);
    fs::create_symlink(folder_ / "nowhere", file_);
    EXPECT_FALSE(open());
    EXPECT_EQ(error_.code(), storeCannotOpenError);
    EXPECT_FALSE(fs::exists(folder_ / "nowhere"));
    for (const fs::path& path : {folder_ / "missing/Items.db", fs::path("/dev/null"),
                                 fs::path("/dev/null/Items.db"), fs::path(), folder_.path()}) {
        EXPECT_FALSE(open(path));
        EXPECT_EQ(error_.code(), storeCannotOpenError) << path;
    }
    EXPECT_FALSE(fs::exists(folder_ / "missing"));
}

TEST_F(StoreOpening, NamesThatSQLiteReadsOtherwiseAreFilesAllTheSame) {
    const fs::path before = fs::current_path();
    fs::current_path(folder_.path());
    EXPECT_TRUE(open("file:x?mode=memory")) << error_.localizedDescription();
    EXPECT_TRUE(open(":memory:")) << error_.localizedDescription();
    fs::current_path(before);
    EXPECT_TRUE(fs::exists(folder_ / "file:x?mode=memory") && fs::exists(folder_ / ":memory:"));
}

TEST_F(StoreOpening, DatabasesOfOthersAreForeign) {
    for (const char* statements :
         {"CREATE TABLE Item (_id INTEGER PRIMARY KEY)", "VACUUM; PRAGMA user_version = 1",
          "CREATE TABLE _metadata (name, value); PRAGMA application_id = 5",
          "PRAGMA journal_mode = WAL; CREATE TABLE Item (_id INTEGER PRIMARY KEY)"}) {
        fs::remove(file_);
        runSQL(file_, statements);
        EXPECT_EQ(refusal(), storeForeignError) << statements;
    }
    fs::remove(file_);
    create();
    model_ = modelOf("Other", 2);
    EXPECT_EQ(refusal(), storeForeignError);
    EXPECT_NE(error_.localizedDescription().find("\"Test\""), std::string::npos);
}

TEST_F(StoreOpening, NewerFilesAreToldFromDamagedOnes) {
    create();
    model_ = modelOf("Test", 1);
    EXPECT_EQ(refusal(), storeNewerError);
    runSQL(
        file_,
        R"(UPDATE _metadata SET value = '{"name": "Test", "version": 9, "wings": 2}' WHERE name = 'model')");
    EXPECT_EQ(refusal(), storeNewerError);
    runSQL(file_, "PRAGMA user_version = 2; DROP TABLE _metadata");
    EXPECT_EQ(refusal(), storeNewerError);
}

TEST_F(StoreOpening, MissingPartsAreDamageThatIsNamed) {
    createWithRows();
    const std::string whole = bytesOf(file_);
    const std::pair<const char*, const char*> damages[] = {
        {"DROP TABLE _metadata", "_metadata"},
        {"DROP TABLE _keys", "_keys"},
        {"DROP TABLE Box", "Box"},
        {"ALTER TABLE Item DROP COLUMN title", "title"},
        {"ALTER TABLE Item RENAME TO Thing", "Item"},
        {"DROP INDEX \"Item:box,from\"; ALTER TABLE Item DROP COLUMN box; ALTER TABLE Item ADD COLUMN box "
         "TEXT",
         "box"},
        {"DROP TABLE Box; CREATE VIEW Box AS SELECT 1 AS _id", "Box"},
        {"DELETE FROM _metadata WHERE name = 'store'", "metadata"},
        {"DELETE FROM _metadata WHERE name = 'model'", "metadata"},
        {"UPDATE _metadata SET value = '{\"name\": \"Test\", \"version\": 2}' WHERE name = 'model'",
         "entities"},
        {"UPDATE _metadata SET value = x'00ff' WHERE name = 'model'", "JSON"},
        {"PRAGMA user_version = 0", "layout"},
    };
    for (const auto& [statements, named] : damages) {
        writeBytes(file_, whole);
        runSQL(file_, statements);
        EXPECT_EQ(refusal(), storeCorruptError) << statements;
        EXPECT_NE(error_.localizedDescription().find(named), std::string::npos)
            << error_.localizedDescription();
    }
}

TEST_F(StoreOpening, WhatOthersAddedStaysAndMissingIndexesAreMadeAgain) {
    createWithRows();
    runSQL(file_, R"(CREATE TABLE Extra (a); ALTER TABLE Item ADD COLUMN shade TEXT DEFAULT 'red';
                     CREATE INDEX theirs ON Item (shade); CREATE VIEW Look AS SELECT title FROM Item;
                     DROP INDEX "Item:box,from"; DROP INDEX "Item:from>till";
                     CREATE INDEX "Item:from>till" ON Item ("from") WHERE till > "from")");
    create();
    const std::string schema =
        runSQL(file_, "SELECT name, sql FROM sqlite_schema WHERE type = 'index' ORDER BY name");
    EXPECT_NE(schema.find(R"(("box", "from"))"), std::string::npos) << schema;
    EXPECT_NE(schema.find(R"(WHERE "till" < "from")"), std::string::npos) << schema;
    EXPECT_EQ(
        runSQL(
            file_,
            "SELECT count(*), max(shade) FROM Item; SELECT count(*) FROM Look; SELECT count(*) FROM Extra"),
        "200|red 200 0");
    EXPECT_EQ(
        runSQL(file_, "PRAGMA integrity_check; SELECT count(*) FROM sqlite_schema WHERE name = 'theirs'"),
        "ok 1");

    options_.open.readOnly = true;
    EXPECT_TRUE(open()) << error_.localizedDescription();
    runSQL(file_, R"(DROP INDEX "Item:box,from")");
    EXPECT_EQ(refusal(), storeReadOnlyError);
}

TEST_F(StoreOpening, WithoutPermissionNothingIsOpenedForReadingInSilence) {
    createWithRows();
    const PermissionsBind bind;
    fs::permissions(file_, fs::perms::owner_read);
    EXPECT_EQ(refusal(), storeReadOnlyError);
    fs::permissions(file_, fs::perms::none);
    EXPECT_FALSE(open());
    EXPECT_EQ(error_.code(), storeCannotOpenError);
    fs::permissions(file_, fs::perms::owner_read | fs::perms::owner_write);
    fs::permissions(folder_.path(), fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(refusal(), storeReadOnlyError);
    EXPECT_NE(error_.localizedDescription().find("folder"), std::string::npos);
    EXPECT_FALSE(open(folder_ / "New.db"));
    EXPECT_EQ(error_.code(), storeReadOnlyError);
    EXPECT_FALSE(fs::exists(folder_ / "New.db"));
}

TEST_F(StoreOpening, AnotherProgramsLockIsSaid) {
    createWithRows();
    sqlite3* other = nullptr;
    sqlite3_open(file_.c_str(), &other);
    sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
    EXPECT_EQ(refusal(), storeLockedError);
    sqlite3_exec(other, "ROLLBACK; DROP INDEX \"Item:box,from\"; BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
    EXPECT_EQ(refusal(), storeLockedError) << "the index cannot be made now";
    sqlite3_close(other);
    create();
}

TEST_F(StoreOpening, OpeningItAgainDropsNoLockOfThisProcess) {
    create();
    auto first = open();
    ASSERT_TRUE(first);
    ASSERT_TRUE(first->database->execute("BEGIN IMMEDIATE", &error_));
    EXPECT_TRUE(sqlite::openConnection(file_, options_, &error_)) << error_.localizedDescription();
    EXPECT_TRUE(open()) << error_.localizedDescription();
    const pid_t child = ::fork();
    if (child == 0) {
        // Locks are seen by other processes alone. SQLite's lie at the first gigabyte.
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        lock.l_start = 0x40000000;
        lock.l_len = 512;
        ::fcntl(::open(file_.c_str(), O_RDWR), F_GETLK, &lock);
        ::_exit(lock.l_type == F_UNLCK ? 1 : 0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0) << "the write lock is gone";
}

TEST_F(StoreOpening, OnAFullDiskNothingHalfMadeStays) {
    options_.open.fileSystem = SmallDisk::name;
    int refused = 0;
    for (int room = 0;; room += 2048) {
        const SmallDisk disk(room);
        if (open()) break;
        ++refused;
        ASSERT_EQ(error_.code(), storeFullError) << room << ": " << error_.localizedFailureReason();
        EXPECT_EQ(fs::file_size(file_), 0U);
    }
    EXPECT_GT(refused, 5);
    EXPECT_EQ(runSQL(file_, "PRAGMA integrity_check"), "ok");
}

TEST_F(StoreOpening, JournalModesAreSetOrRefusedAndForeignFilesKeepTheirs) {
    options_.journalMode = "WAL";
    create();
    EXPECT_EQ(runSQL(file_, "PRAGMA journal_mode"), "wal");
    options_.journalMode = "delete";
    create();
    EXPECT_EQ(runSQL(file_, "PRAGMA journal_mode"), "delete");
    options_.journalMode = "DELETE; DROP TABLE Item";
    EXPECT_EQ(refusal(), storeOtherError);
    options_.journalMode = "TRUNCATE";
    auto store = open();
    ASSERT_TRUE(store) << error_.localizedDescription();
    EXPECT_EQ(store->database->singleValue("PRAGMA journal_mode", nullptr), Value("truncate"));
}

}  // namespace
}  // namespace orvane::test
