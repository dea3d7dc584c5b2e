#include <array>

#include "foundation/observing.h"
#include "tests/persistence/graph_fixture.h"

namespace orvane {
namespace {

TEST_F(GraphTest, KeepsEveryKindOfValueExactly) {
    const Data bytes{0, 255, 10};
    const auto from = dateFromSecondsSinceEpoch(1772438400.25);
    insert("Book", {{"title", Value(std::string("a\0ü", 4))},
                    {"pages", std::int64_t{1} << 62},
                    {"price", DecimalSeconds(-1)},
                    {"weight", 0.1},
                    {"lent", false},
                    {"from", from},
                    {"scan", bytes}});
    insert("Book", {});
    save();

    const auto other = openContext();
    const auto books = other->fetch<ManagedObject>({"Book"});
    ASSERT_EQ(books.size(), 2U);
    EXPECT_EQ(books[0]->valueForKey("title"), Value(std::string("a\0ü", 4)));
    EXPECT_EQ(books[0]->valueForKey("pages"), Value(std::int64_t{1} << 62));
    EXPECT_EQ(books[0]->valueForKey("price"), Value(DecimalSeconds(-1)));
    EXPECT_EQ(books[0]->valueForKey("weight"), Value(0.1));
    EXPECT_EQ(books[0]->valueForKey("lent"), Value(false));
    EXPECT_EQ(books[0]->valueForKey("from"), Value(from));
    EXPECT_EQ(books[0]->valueForKey("scan"), Value(bytes));
    for (const char* key : {"title", "pages", "price", "weight", "lent", "from", "to", "scan", "shelf"})
        EXPECT_TRUE(books[1]->valueForKey(key).isNone()) << key;
    EXPECT_THROW(books[0]->setValueForKey("many", "pages"), WrongValueError);
    EXPECT_THROW(books[0]->valueForKey("author"), UnknownKeyError);
    EXPECT_THROW(other->insertNewObject("Author"), std::invalid_argument);
}

TEST_F(GraphTest, KeepsOneObjectAnIdentityAndLetsUnchangedOnesGo) {
    insert("Book", {{"title", "a"}});
    save();
    auto first = context_->fetch<ManagedObject>({"Book"});
    auto again = context_->fetch<ManagedObject>({"Book", Predicate::withFormat("title == 'a'")});
    ASSERT_EQ(again.size(), 1U);
    EXPECT_EQ(first[0], again[0]);
    const ManagedObjectID identifier = first[0]->objectID();
    EXPECT_FALSE(identifier.isTemporaryID());
    const auto& coordinator = *context_->persistentStoreCoordinator();
    EXPECT_EQ(coordinator.managedObjectIDForURIRepresentation(identifier.URIRepresentation()), identifier);
    for (const char* text : {"", "x-orvane://", "x-orvane://other/Book/p1", "x-orvane:///Book/p1",
                             "x-orvane:///Book/t0", "x-orvane:///Book/t99999999999999999999"})
        EXPECT_FALSE(coordinator.managedObjectIDForURIRepresentation(text)) << text;

    first.clear();
    EXPECT_EQ(context_->registeredObjectCount(), 1U);
    again.clear();
    context_->undoManager()->removeAllActions();
    EXPECT_EQ(context_->registeredObjectCount(), 0U);
    EXPECT_FALSE(context_->objectRegisteredForID(identifier));
    EXPECT_TRUE(context_->existingObjectWithID(identifier));
}

TEST_F(GraphTest, KeepsBothEndsOfARelationshipTogether) {
    const auto left = insert("Shelf", {{"label", "left"}});
    const auto right = insert("Shelf", {{"label", "right"}});
    const auto book = insert("Book", {{"title", "a"}, {"pages", 3}, {"shelf", left}});
    EXPECT_EQ(left->valueForKeyPath("books.title"), Value(Value::Array{"a"}));
    save();
    book->setValueForKey(right, "shelf");
    EXPECT_EQ(left->valueForKeyPath("books.@count"), Value(0));
    EXPECT_EQ(right->valueForKeyPath("books.@sum.pages"), Value(3));
    right->setValueForKey(Value::Array{}, "books");
    EXPECT_TRUE(book->valueForKey("shelf").isNone());
    left->setValueForKey(Value::Array{Value(book)}, "books");
    EXPECT_EQ(book->valueForKeyPath("shelf.label"), Value("left"));

    const auto cover = insert("Cover", {{"book", book}});
    const auto rival = insert("Cover", {});
    EXPECT_EQ(book->valueForKey("cover"), Value(cover));
    book->setValueForKey(rival, "cover");
    EXPECT_TRUE(cover->valueForKey("book").isNone());
    EXPECT_EQ(rival->valueForKey("book"), Value(book));
    save();
    EXPECT_EQ(listing(*openContext(), "Book", "title", Predicate::withFormat("shelf.label == 'left'")),
              "\"a\"");
    EXPECT_THROW(book->setValueForKey(cover, "shelf"), std::invalid_argument);
    EXPECT_THROW(book->setValueForKey(openContext()->insertNewObject("Shelf"), "shelf"), std::logic_error);
}

TEST_F(GraphTest, DeletesByTheRulesOfTheModel) {
    const auto shelf = insert("Shelf", {});
    const auto book = insert("Book", {{"title", "a"}, {"shelf", shelf}});
    const auto cover = insert("Cover", {{"book", book}});
    save();
    context_->deleteObject(*shelf);
    EXPECT_TRUE(book->isDeleted());
    EXPECT_FALSE(cover->isDeleted());
    EXPECT_TRUE(cover->valueForKey("book").isNone());
    EXPECT_EQ(context_->countForFetchRequest({"Book"}), 0U);
    save();
    EXPECT_TRUE(book->isFault());
    EXPECT_EQ(book->managedObjectContext(), nullptr);
    EXPECT_EQ(listing(*openContext(), "Book", "title"), "");
    // A key is never given out twice.
    const auto next = insert("Book", {});
    save();
    EXPECT_GT(next->objectID().key(), book->objectID().key());
}

TEST_F(GraphTest, FetchesSeeUnsavedChanges) {
    for (const char* title : {"a", "b", "c"}) insert("Book", {{"title", title}, {"pages", 1}});
    save();
    const auto books = context_->fetch<ManagedObject>({"Book", std::nullopt, {{"title", true}}});
    books[0]->setValueForKey("z", "title");
    context_->deleteObject(*books[1]);
    insert("Book", {{"title", "d"}});
    EXPECT_EQ(listing(*context_, "Book", "title"), R"("c" "d" "z")");
    EXPECT_EQ(listing(*context_, "Book", "title", Predicate::withFormat("title == 'a'")), "");
    EXPECT_EQ(listing(*context_, "Book", "title", Predicate::withFormat("title >= 'd'")), R"("d" "z")");
    FetchRequest second{"Book", std::nullopt, {{"title", false}}, 1, 1};
    EXPECT_EQ(context_->fetch<ManagedObject>(second)[0]->valueForKey("title"), Value("d"));
    EXPECT_EQ(context_->identifiersForFetchRequest(second)->size(), 1U);
    EXPECT_EQ(context_->countForFetchRequest({"Book"}), 3U);
    // The file decides about joined rows only while it knows them.
    const auto shelf = insert("Shelf", {{"label", "x"}});
    books[2]->setValueForKey(shelf, "shelf");
    save();
    shelf->setValueForKey("y", "label");
    EXPECT_EQ(listing(*context_, "Book", "title", Predicate::withFormat("shelf.label == 'y'")), "\"c\"");
    EXPECT_EQ(listing(*openContext(), "Book", "title"), R"("c" "d" "z")");
}

TEST_F(GraphTest, RollsBackResetsAndRefreshes) {
    const auto shelf = insert("Shelf", {{"label", "s"}});
    const auto book = insert("Book", {{"title", "a"}, {"shelf", shelf}});
    save();
    EXPECT_EQ(shelf->valueForKeyPath("books.@count"), Value(1));
    const auto fresh = insert("Book", {{"title", "b"}, {"shelf", shelf}});
    book->setValueForKey("changed", "title");
    context_->rollback();
    EXPECT_FALSE(context_->hasChanges());
    EXPECT_FALSE(fresh->isUsable());
    EXPECT_EQ(book->valueForKey("title"), Value("a"));
    EXPECT_EQ(shelf->valueForKeyPath("books.title"), Value(Value::Array{"a"}));

    const auto elsewhere = openContext();
    elsewhere->fetch<ManagedObject>({"Book"})[0]->setValueForKey("elsewhere", "title");
    ASSERT_TRUE(elsewhere->save());
    book->setValueForKey(7, "pages");
    context_->refreshObject(*book, true);
    EXPECT_TRUE(book->isFault());
    EXPECT_EQ(book->valueForKey("title"), Value("elsewhere"));
    EXPECT_EQ(book->valueForKey("pages"), Value(7));
    context_->refreshObject(*book, false);
    EXPECT_TRUE(book->valueForKey("pages").isNone());
    EXPECT_FALSE(context_->hasChanges());

    context_->reset();
    EXPECT_TRUE(book->isFault());
    EXPECT_TRUE(book->valueForKey("title").isNone());
    book->setValueForKey("ignored", "title");
    EXPECT_FALSE(context_->hasChanges());
    EXPECT_NE(context_->fetch<ManagedObject>({"Book"})[0], book);
}

TEST_F(GraphTest, WritesOnlyWhatChangedAndAcceptsThatRowsVanish) {
    const auto book = insert("Book", {{"title", "a"}, {"pages", 1}});
    save();
    const auto elsewhere = openContext();
    const auto same = elsewhere->fetch<ManagedObject>({"Book"})[0];
    same->setValueForKey(2, "pages");
    ASSERT_TRUE(elsewhere->save());
    book->setValueForKey("b", "title");
    save();
    EXPECT_EQ(listing(*openContext(), "Book", "pages"), "2");

    elsewhere->deleteObject(*same);
    ASSERT_TRUE(elsewhere->save());
    book->setValueForKey("c", "title");
    insert("Book", {{"title", "new"}});
    save();
    EXPECT_TRUE(book->isFault());
    EXPECT_EQ(listing(*openContext(), "Book", "title"), "\"new\"");
}

TEST_F(GraphTest, AFailedSaveKeepsEveryChange) {
    const auto cover = insert("Cover", {});
    EXPECT_EQ(cover->valueForKey("color"), Value("red"));
    cover->setValueForKey(Value(), "color");
    insert("Book", {{"title", "a"}});
    Error error;
    EXPECT_FALSE(context_->save(&error));
    EXPECT_NE(error.localizedDescription().find("color"), std::string::npos);
    EXPECT_TRUE(cover->objectID().isTemporaryID());
    EXPECT_EQ(listing(*openContext(), "Book", "title"), "");
    cover->setValueForKey("blue", "color");
    save();
    EXPECT_EQ(listing(*openContext(), "Cover", "color"), "\"blue\"");
    EXPECT_EQ(listing(*openContext(), "Book", "title"), "\"a\"");
}

TEST_F(GraphTest, UndoesAndRedoesEveryKindOfChange) {
    UndoManager& undo = *context_->undoManager();
    const auto shelf = insert("Shelf", {{"label", "s"}});
    const auto book = insert("Book", {{"title", "a"}, {"shelf", shelf}});
    save();
    const auto state = [&] {
        return listing(*context_, "Book", "title") + " of " +
               shelf->valueForKeyPath("books.@count").description();
    };
    // Each edit, then what it makes of the state; undone one by one and redone one by one.
    const std::array<std::function<void()>, 4> edits{
        [&] { book->setValueForKey("b", "title"); },
        [&] {
            insert("Book", {{"title", "c"}, {"shelf", shelf}});
        },
        [&] { book->setValueForKey(Value(), "shelf"); },
        [&] { context_->deleteObject(*book); },
    };
    std::vector<std::string> states{state()};
    for (const auto& edit : edits) {
        edit();
        context_->processPendingChanges();
        states.push_back(state());
    }
    EXPECT_EQ(states.back(), "\"c\" of 1");
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = edits.size(); i > 0; --i) {
            undo.undo();
            EXPECT_EQ(state(), states[i - 1]);
        }
        for (std::size_t i = 0; i < edits.size(); ++i) {
            undo.redo();
            EXPECT_EQ(state(), states[i + 1]);
        }
    }
    // A deletion that was saved can be taken back as well: the row is written anew.
    save();
    undo.undo();
    save();
    EXPECT_EQ(listing(*openContext(), "Book", "title"), R"("b" "c")");
}

TEST_F(GraphTest, SuspendedAndGroupedUndo) {
    UndoManager& undo = *context_->undoManager();
    const auto book = insert("Book", {{"title", "a"}});
    save();
    undo.removeAllActions();
    undo.disableUndoRegistration();
    undo.disableUndoRegistration();
    undo.enableUndoRegistration();
    book->setValueForKey("hidden", "title");
    EXPECT_FALSE(undo.isUndoRegistrationEnabled());
    EXPECT_FALSE(undo.canUndo());
    undo.enableUndoRegistration();
    undo.enableUndoRegistration();
    undo.beginUndoGrouping();
    book->setValueForKey("b", "title");
    context_->processPendingChanges();
    book->setValueForKey(5, "pages");
    undo.endUndoGrouping();
    undo.undo();
    EXPECT_EQ(book->valueForKey("title"), Value("hidden"));
    EXPECT_TRUE(book->valueForKey("pages").isNone());
    EXPECT_TRUE(undo.canRedo());
    book->setValueForKey("other", "title");
    EXPECT_FALSE(undo.canRedo());
}

TEST_F(GraphTest, TellsObserversAndListenersOfChanges) {
    const auto shelf = insert("Shelf", {});
    save();
    int counts = 0;
    Value last;
    const auto token = observe(*shelf, "books", [&](const Change& change) {
        ++counts;
        last = Value(static_cast<std::int64_t>(change.newValue.asArray()->size()));
    });
    std::string notices;
    const auto note = [&](const Notification& notification) {
        for (const char* key : {NSInsertedObjectsKey, NSUpdatedObjectsKey, NSDeletedObjectsKey})
            notices += std::to_string(notification.userInfo[key].asArray()->size());
        notices += " ";
    };
    context_->notificationCenter().addObserver(this, note);
    const auto book = insert("Book", {{"shelf", shelf}});
    EXPECT_EQ(counts, 1);
    EXPECT_EQ(last, Value(1));
    save();
    book->setValueForKey("t", "title");
    save();
    context_->deleteObject(*book);
    EXPECT_EQ(last, Value(0));
    save();
    EXPECT_EQ(notices, "110 100 010 010 011 001 ");
}

TEST_F(GraphTest, ObjectsOutliveTheirContext) {
    auto book = insert("Book", {{"title", "a"}});
    const auto shelf = insert("Shelf", {});
    book->setValueForKey(shelf, "shelf");
    save();
    context_.reset();
    EXPECT_TRUE(book->isFault());
    EXPECT_TRUE(book->valueForKey("title").isNone());
    EXPECT_EQ(book->valueForKeyPath("shelf.label"), Value());
    EXPECT_EQ(shelf->valueForKeyPath("books.@count"), Value(0));
    book->setValueForKey("ignored", "title");
    EXPECT_FALSE(book->objectInMainContext());
}

TEST_F(GraphTest, InvertedIntervalsAreFoundToo) {
    const auto at = [](double seconds) { return Value(dateFromSecondsSinceEpoch(seconds)); };
    insert("Book", {{"title", "inside"}, {"from", at(10)}, {"to", at(20)}});
    insert("Book", {{"title", "late"}, {"from", at(30)}, {"to", at(60)}});
    insert("Book", {{"title", "inverted"}, {"from", at(90)}, {"to", at(15)}});
    insert("Book", {{"title", "endless"}, {"from", at(10)}});
    save();
    const auto predicate = Predicate::withFormat("from >= %@ AND to <= %@", {at(5), at(40)});
    EXPECT_EQ(listing(*openContext(), "Book", "title", predicate), R"("inside" "inverted")");
    EXPECT_EQ(openContext()->countForFetchRequest({"Book", predicate}), 2U);
    const auto limited = openContext()->fetch<ManagedObject>({"Book", predicate, {{"from", false}}, 1});
    ASSERT_EQ(limited.size(), 1U);
}

}  // namespace
}  // namespace orvane
