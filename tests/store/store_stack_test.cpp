#include <fstream>

#include "persistence/persistence_errors.h"
#include "tests/store/store_fixture.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

const Texts notInitialized{"YOUR_ERROR_DOMAIN 9999"};

class StoreStackTest : public test::StoreFixture {
  protected:
    void expectFailure(const Texts& expected) {
        errors_.clear();
        EXPECT_EQ(stack().managedObjectContext(), nullptr);
        EXPECT_EQ(shownErrors(), expected);
        EXPECT_EQ(stack().existingManagedObjectContext(), nullptr);
    }
};

TEST_F(StoreStackTest, theFirstStartMakesFolderAndDatabase) {
    EXPECT_EQ(stack().applicationFilesDirectory(), folder_ / "share" / "Orvane");
    EXPECT_FALSE(fs::exists(folder_ / "share"));
    OrvaneManagedObjectContext* context = stack().managedObjectContext();
    ASSERT_NE(context, nullptr);
    EXPECT_TRUE(fs::is_regular_file(database()));
    EXPECT_TRUE(errors_.empty());
    EXPECT_TRUE(lines_.empty());
    EXPECT_NE(context->undoManager(), nullptr);
    EXPECT_EQ(context->parentContext(), nullptr);

    // Every piece is kept, even when what it was built from goes.
    const auto coordinator = stack().persistentStoreCoordinator();
    const auto model = stack().managedObjectModel();
    fs::rename(folder_ / "share", folder_ / "moved");
    desktop().fileManager().setResourceDirectory(folder_ / "none");
    EXPECT_EQ(stack().managedObjectContext(), context);
    EXPECT_EQ(stack().persistentStoreCoordinator(), coordinator);
    EXPECT_EQ(stack().managedObjectModel(), model);
    EXPECT_FALSE(fs::exists(folder_ / "share"));
    fs::rename(folder_ / "moved", folder_ / "share");
}

TEST_F(StoreStackTest, theDatabaseIsOneFileWithARollbackJournal) {
    fs::create_directories(database().parent_path());
    insert<OrvaneGroup>();
    startAnew();
    stack_ = std::make_unique<StoreStack>();
    test::runSQL(database(), "PRAGMA journal_mode = WAL");  // as another program may leave it
    insert<OrvaneGroup>();
    startAnew();
    EXPECT_EQ(test::runSQL(database(), "PRAGMA journal_mode; SELECT count(*) FROM \"Group\""), "delete 2");
    EXPECT_EQ(std::distance(fs::directory_iterator(database().parent_path()), fs::directory_iterator()), 1);
}

TEST_F(StoreStackTest, theHostsOwnFolderReplacesTheDefaultOne) {
    stack().setUrl(folder_ / "mine" / "deep");
    context();
    EXPECT_TRUE(fs::exists(folder_ / "mine" / "deep" / "Orvaning.db"));
    stack().setUrl(folder_ / "later");
    insert<OrvaneGroup>();
    startAnew();
    EXPECT_FALSE(fs::exists(folder_ / "later"));
    EXPECT_FALSE(fs::exists(folder_ / "share"));
    EXPECT_TRUE(errors_.empty());
}

TEST_F(StoreStackTest, aFileInPlaceOfTheFolderIsReportedAndLeftAlone) {
    const fs::path file = folder_ / "share" / "Orvane";
    fs::create_directories(folder_ / "share");
    test::writeBytes(file, "mine");
    expectFailure({"YOUR_ERROR_DOMAIN 101", "YOUR_ERROR_DOMAIN 9999"});
    EXPECT_EQ(errors_[0].localizedDescription(),
              "Expected a folder to store application data, found a file (" + file.string() + ").");
    EXPECT_EQ(errors_[0].userInfo().size(), 1U);
    EXPECT_EQ(errors_[1].localizedDescription(), "Failed to initialize the store");
    EXPECT_EQ(errors_[1].localizedFailureReason(), "There was an error building up the data file.");
    EXPECT_EQ(test::bytesOf(file), "mine");

    // Every call tries again, until it works.
    expectFailure({"YOUR_ERROR_DOMAIN 101", "YOUR_ERROR_DOMAIN 9999"});
    fs::remove(file);
    EXPECT_NE(stack().managedObjectContext(), nullptr);
}

TEST_F(StoreStackTest, aFolderThatCannotBeMadeOrReadIsReported) {
    test::writeBytes(folder_ / "share", "a file on the way");
    expectFailure({std::string(fileErrorDomain) + " " + std::to_string(fileWriteFileExistsError),
                   "YOUR_ERROR_DOMAIN 9999"});
    fs::remove(folder_ / "share");

    fs::create_directories(folder_ / "share" / "Orvane");
    fs::permissions(folder_ / "share", fs::perms::none);
    {
        const test::PermissionsBind bound;
        expectFailure({std::string(fileErrorDomain) + " " + std::to_string(fileReadNoPermissionError),
                       "YOUR_ERROR_DOMAIN 9999"});
    }
    fs::permissions(folder_ / "share", fs::perms::owner_all);

    desktop().fileManager().setApplicationSupportDirectory({});
    EXPECT_TRUE(stack().applicationFilesDirectory().empty());
    errors_.clear();
    EXPECT_EQ(stack().managedObjectContext(), nullptr);
    EXPECT_EQ(errors_.size(), 2U);
}

TEST_F(StoreStackTest, aMissingModelIsLoggedAndLookedForAgain) {
    const fs::path resources = folder_ / "resources";
    fs::create_directories(resources);
    desktop().fileManager().setResourceDirectory(resources);
    const std::string line = "Orvane:persistentStoreCoordinator No model to generate a store from";
    expectFailure(notInitialized);
    EXPECT_EQ(lines_, Texts{line});
    EXPECT_FALSE(fs::exists(folder_ / "share"));

    fs::create_directories(resources / "Orvane.momd");
    test::writeBytes(resources / "Orvane.momd" / "versions.json", "{");
    expectFailure(notInitialized);
    EXPECT_EQ(lines_, (Texts{line, line}));

    fs::remove_all(resources / "Orvane.momd");
    fs::copy(ORVANE_SOURCE_DIR "/store/Orvane.momd", resources / "Orvane.momd", fs::copy_options::recursive);
    EXPECT_NE(stack().managedObjectContext(), nullptr);
}

TEST_F(StoreStackTest, aModelThatTheClassesDoNotFitIsReported) {
    const fs::path model = folder_ / "resources" / "Orvane.momd";
    fs::create_directories(model);
    test::writeBytes(model / "versions.json", R"({"current": "Orvane 2", "versions": ["Orvane 2"]})");
    // As many properties as the class has, under another name.
    std::string text = test::bytesOf(ORVANE_SOURCE_DIR "/store/Orvane.momd/Orvane 1.json");
    text.replace(text.find("windowName"), 10, "windowText");
    test::writeBytes(model / "Orvane 2.json", text);
    desktop().fileManager().setResourceDirectory(folder_ / "resources");
    expectFailure({std::string(persistenceErrorDomain) + " " + std::to_string(modelMalformedError),
                   "YOUR_ERROR_DOMAIN 9999"});
    EXPECT_FALSE(fs::exists(database()));
}

TEST_F(StoreStackTest, aDatabaseThatCannotBeOpenedStaysAsItIs) {
    fs::create_directories(database().parent_path());
    const std::string text(5000, 'x');
    test::writeBytes(database(), text);
    const std::string notDatabase =
        std::string(persistenceErrorDomain) + " " + std::to_string(storeNotDatabaseError);
    expectFailure({notDatabase, "YOUR_ERROR_DOMAIN 9999"});
    expectFailure({notDatabase, "YOUR_ERROR_DOMAIN 9999"});
    EXPECT_EQ(test::bytesOf(database()), text);

    fs::remove(database());
    desktop().fileManager().failingFileSystem().setOpenFails(true);
    errors_.clear();
    EXPECT_EQ(stack().managedObjectContext(), nullptr);
    EXPECT_EQ(errors_.size(), 2U);
    desktop().fileManager().failingFileSystem().setOpenFails(false);
    EXPECT_NE(stack().managedObjectContext(), nullptr);
}

TEST_F(StoreStackTest, onlyFetchesWithoutPredicateAreLogged) {
    insert<OrvaneGroup>()->setName("one");
    insert<OrvaneGroup>()->setName("two");
    startAnew();
    const FetchRequest all{"Group", std::nullopt, {SortOrder{"name", false}}};
    const auto groups = context().fetch<OrvaneGroup>(all);
    EXPECT_EQ(lines_, Texts{all.description()});
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_EQ(groups[0]->name(), "two");
    EXPECT_EQ(context().fetch<OrvaneGroup>({"Group", Predicate::withFormat("name == 'one'")}).size(), 1U);
    EXPECT_EQ(lines_.size(), 1U);

    desktop().fileManager().failingFileSystem().setReadsFail(true);
    context().reset();
    test::runSQL(database(), "UPDATE \"Group\" SET name = 'three'");  // what was read before no longer holds
    Error error;
    EXPECT_FALSE(context().executeFetchRequest(all, &error).has_value());
    EXPECT_TRUE(error);
    EXPECT_EQ(lines_.size(), 2U);
}

TEST_F(StoreStackTest, objectsOfAChildContextAreFoundInTheMainContext) {
    const auto app = insert<OrvaneApp>();
    app->setName("both");
    EXPECT_EQ(app->objectInMainContext(), nullptr);
    ASSERT_TRUE(context().save());

    ManagedObjectContext child(ConcurrencyType::privateQueue);
    child.setParentContext(&context());
    const auto inChild = child.fetch<OrvaneApp>({"Application"});
    ASSERT_EQ(inChild.size(), 1U);
    EXPECT_NE(inChild[0], app);
    EXPECT_EQ(inChild[0]->objectInMainContext(), app);
    EXPECT_EQ(OrvaneApp::insertInManagedObjectContext(child)->objectInMainContext(), nullptr);
    EXPECT_TRUE(lines_.empty());  // child contexts do not log
}

}  // namespace
}  // namespace orvane
