#include <algorithm>
#include <thread>

#include "persistence/undo_manager.h"
#include "tests/persistence/graph_fixture.h"

namespace orvane {

/// One request is answered in different ways: from rows, from keys when most objects are alive, and in pieces
/// by a child context. All must agree.
class FetchWays : public GraphTest {
  protected:
    static constexpr int bookCount = 3000;

    /// Books of which many begin at the same time, so that pieces end between equal ones.
    void insertBooks() {
        for (int i = 0; i < bookCount; ++i)
            insert("Book", {{"title", "Title " + std::to_string(i % 700)},
                            {"pages", i},
                            {"from", dateFromSecondsSinceEpoch(i / 1000)},
                            {"to", dateFromSecondsSinceEpoch(i / 1000 + (i % 97 == 0 ? -1 : 1))}});
        save();
    }
    static FetchRequest request(const char* format, std::initializer_list<Value> arguments = {}) {
        return {.entityName = "Book", .predicate = Predicate::withFormat(format, arguments)};
    }
    static std::vector<std::int64_t> pages(ManagedObjectContext& context, const FetchRequest& request) {
        Error error;
        const auto objects = context.executeFetchRequest(request, &error);
        EXPECT_TRUE(objects) << error.localizedDescription();
        std::vector<std::int64_t> result;
        for (const auto& object : *objects) result.push_back(object->valueForKey("pages").integerValue());
        return result;
    }
    static std::vector<std::int64_t> sorted(std::vector<std::int64_t> values) {
        std::sort(values.begin(), values.end());
        return values;
    }
    /// Runs `work` with a child of the main context on a thread of its own.
    template <class Work>
    void inChild(Work work) {
        ManagedObjectContext child(ConcurrencyType::privateQueue);
        child.setParentContext(context_.get());
        std::thread([&] {
            work(child);
            child.reset();
        }).join();
    }
};

TEST_F(FetchWays, AliveOrNotTheAnswersAndTheirOrderAreTheSame) {
    insertBooks();
    std::vector<FetchRequest> requests{
        request("TRUEPREDICATE"), request("pages > 1500"), request("title == %@", {"Title 5"}),
        request("from >= %@ AND from <= %@", {dateFromSecondsSinceEpoch(1), dateFromSecondsSinceEpoch(1)})};
    requests.push_back(requests[1]);
    requests.back().sortOrders = {{"title", false}, {"pages", true}};
    requests.back().fetchLimit = 20;
    requests.back().fetchOffset = 7;
    for (const FetchRequest& each : requests) {
        context_->reset();
        const auto unread = pages(*context_, each);
        EXPECT_FALSE(unread.empty());
        // Two thirds are at hand, some of them as faults or without their texts.
        auto alive = *context_->executeFetchRequest({.entityName = "Book",
                                                     .predicate = Predicate::withFormat("pages < 2000"),
                                                     .textsWhenRead = true});
        for (std::size_t i = 0; i < alive.size(); i += 3) context_->refreshObject(*alive[i], true);
        EXPECT_EQ(pages(*context_, each), unread) << each.description();
    }
}

TEST_F(FetchWays, TextsThatWereLeftInTheFileComeWhenTheyAreWanted) {
    insertBooks();
    context_->reset();
    FetchRequest late = request("pages < 100");
    late.sortOrders = {{"pages", true}};
    late.textsWhenRead = true;
    const auto books = *context_->executeFetchRequest(late);
    ASSERT_EQ(books.size(), 100U);
    EXPECT_FALSE(books[3]->isFault());

    // What another program writes meanwhile shows that the texts were not read, and that nothing else is read
    // a second time.
    {
        const auto other = openContext();
        const auto changed = *other->executeFetchRequest(request("pages == 3 OR pages == 4"));
        for (const auto& book : changed) {
            book->setValueForKey("Changed", "title");
            book->setValueForKey(1000000, "pages");
        }
        ASSERT_TRUE(other->save(nullptr));
    }
    EXPECT_EQ(books[3]->valueForKey("title"), Value("Changed"));
    EXPECT_EQ(books[3]->valueForKey("pages"), Value(3));
    EXPECT_EQ(books[99]->valueForKey("title"), Value("Title 99"));

    // A change, its undoing and a deletion need the texts that were there before.
    context_->reset();
    const auto again = *context_->executeFetchRequest(late);
    ASSERT_EQ(again.size(), 98U);
    again[0]->setValueForKey("New", "title");
    context_->undoManager()->undo();
    EXPECT_EQ(again[0]->valueForKey("title"), Value("Title 0"));
    again[1]->setValueForKey(1001, "pages");
    save();
    EXPECT_EQ(again[1]->valueForKey("title"), Value("Title 1"));
    const Ref<ManagedObject> deleted = again[2];
    context_->deleteObject(*deleted);
    save();
    EXPECT_EQ(deleted->valueForKey("title"), Value("Title 2"));
    // A row that goes takes its texts along.
    {
        const auto other = openContext();
        other->deleteObject(*other->executeFetchRequest(request("pages == 50"))->front());
        ASSERT_TRUE(other->save(nullptr));
    }
    context_->reset();
    EXPECT_EQ(listing(*context_, "Book", "title", Predicate::withFormat("pages == 50")), "");
}

TEST_F(FetchWays, AChildReadsInPiecesWhatItsParentReadsAtOnce) {
    insertBooks();
    const Date one = dateFromSecondsSinceEpoch(1);
    const std::vector<FetchRequest> requests{
        request("from >= %@", {one}),
        request("from > %@", {dateFromSecondsSinceEpoch(0)}),
        request("from >= %@ AND to <= %@", {one, dateFromSecondsSinceEpoch(3)}),
        request("from < %@", {one}),
        request("pages >= 10 AND title BEGINSWITH 'Title 1'"),
        request("TRUEPREDICATE")};
    // Unsaved changes of the parent: one book leaves each answer, one comes in.
    const Ref<ManagedObject> moved = context_->executeFetchRequest(request("pages == 1200"))->front();
    moved->setValueForKey(dateFromSecondsSinceEpoch(-5), "from");
    insert("Book", {{"title", "Title 1"}, {"pages", 5000}, {"from", one}, {"to", one}});
    context_->processPendingChanges();
    for (const FetchRequest& each : requests) {
        const auto expected = sorted(pages(*context_, each));
        inChild([&](ManagedObjectContext& child) {
            EXPECT_EQ(sorted(pages(child, each)), expected) << each.description();
        });
    }
    inChild([&](ManagedObjectContext& child) {
        FetchRequest late = request("pages < 400 OR pages == 5000");
        late.sortOrders = {{"pages", true}};
        late.textsWhenRead = true;
        const auto books = *child.executeFetchRequest(late);
        ASSERT_EQ(books.size(), 401U);
        EXPECT_EQ(books[399]->valueForKey("title"), Value("Title 399"));
        EXPECT_EQ(books[400]->valueForKey("title"), Value("Title 1"));
    });
}

TEST_F(FetchWays, AReadScopeKeepsTheFileAsItWasSeenUntilASave) {
    insert("Book", {{"title", "First"}, {"pages", 1}});
    save();
    const auto other = openContext();
    const ReadScope scope(*context_);
    EXPECT_EQ(pages(*context_, request("pages >= 1")).size(), 1U);
    other->insertNewObject("Book")->setValueForKey(2, "pages");
    EXPECT_FALSE(other->save(nullptr));
    EXPECT_EQ(pages(*context_, request("pages >= 1")).size(), 1U);
    insert("Book", {{"title", "Third"}, {"pages", 3}});
    save();
    Error error;
    ASSERT_TRUE(other->save(&error)) << error.localizedDescription();
    EXPECT_EQ(sorted(pages(*context_, request("pages >= 1"))), (std::vector<std::int64_t>{1, 2, 3}));
}

TEST_F(FetchWays, AWriteScopeKeepsOthersFromWritingUntilTheSave) {
    insert("Book", {{"title", "First"}, {"pages", 1}});
    save();
    const auto other = openContext();
    const Ref<ManagedObject> theirs = other->executeFetchRequest(request("pages == 1"))->front();
    {
        const WriteScope scope(*context_);
        const Ref<ManagedObject> ours = context_->executeFetchRequest(request("pages == 1"))->front();
        theirs->setValueForKey("Theirs", "title");
        Error error;
        EXPECT_FALSE(other->save(&error));
        EXPECT_TRUE(other->hasChanges());
        ours->setValueForKey("Ours", "title");
        save();
        // The save ended it: the other program's turn.
        ASSERT_TRUE(other->save(&error)) << error.localizedDescription();
        insert("Book", {{"title", "Second"}, {"pages", 2}});
        save();
    }
    {
        // While another holds the lock a scope changes nothing, and the save tells why it failed.
        const WriteScope first(*other);
        const WriteScope second(*context_);
        insert("Book", {{"title", "Third"}, {"pages", 3}});
        EXPECT_EQ(listing(*context_, "Book", "title"), "\"Ours\" \"Second\" \"Third\"");
        Error error;
        EXPECT_FALSE(context_->save(&error));
        EXPECT_NE(error.localizedDescription().find("another"), std::string::npos)
            << error.localizedDescription();
    }
    save();
    EXPECT_EQ(listing(*other, "Book", "title"), "\"Second\" \"Theirs\" \"Third\"");
}

}  // namespace orvane
