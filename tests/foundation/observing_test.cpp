#include "foundation/observing.h"

#include <gtest/gtest.h>

#include "tests/foundation/folder.h"

namespace orvane {
namespace {

class Observing : public testing::Test {
  protected:
    /// Notes "keyPath: old -> new".
    ChangeHandler note() {
        return [this](const Change& change) {
            told_.push_back(std::string(change.keyPath) + ": " + change.oldValue.description() + " -> " +
                            change.newValue.description());
        };
    }
    std::vector<std::string> told() { return std::exchange(told_, {}); }
    using Told = std::vector<std::string>;

    Ref<Folder> folder_ = makeRef<Folder>("a", 1);

  private:
    Told told_;
};

TEST_F(Observing, TellsOldAndNewAtTheOutermostAnnouncement) {
    auto token = observe(*folder_, "size", note());
    folder_->setSize(2);
    folder_->setSize(2);
    folder_->setName("other");
    EXPECT_EQ(told(), (Told{"size: 1 -> 2", "size: 2 -> 2"}));

    folder_->willChangeValueForKey("size");
    folder_->willChangeValueForKey("twin");
    folder_->setSize(3);
    folder_->didChangeValueForKey("size");
    folder_->setSize(4);
    EXPECT_EQ(told(), Told{});
    folder_->didChangeValueForKey("twin");
    EXPECT_EQ(told(), Told{"size: 2 -> 4"});

    folder_->didChangeValueForKey("size");  // never begun
    folder_->willChangeValueForKey("size");
    auto late = observe(*folder_, "size", note());
    token.cancel();
    folder_->didChangeValueForKey("size");
    EXPECT_EQ(told(), Told{});
    late.cancel();
    EXPECT_FALSE(folder_->isObserved());
    EXPECT_THROW((void)observe(*folder_, "nme", note()), UnknownKeyError);
    EXPECT_THROW((void)observe(*folder_, "nme.name", note()), UnknownKeyError);
    EXPECT_FALSE(folder_->isObserved());
}

TEST_F(Observing, FollowsDependenciesInChainsAndCircles) {
    auto twin = observe(*folder_, "twin", note());  // depends on size, which depends on it
    folder_->setSize(2);
    EXPECT_EQ(told(), Told{"twin: 1 -> 2"});

    // A title depends on a path, which depends on the parent's path, and so on upwards.
    auto title = observe(*folder_, "title", note());
    const auto parent = makeRef<Folder>("b");
    folder_->setParent(parent);
    EXPECT_EQ(told(), Told{R"(title: "</a>" -> "</b/a>")"});
    const auto grandparent = makeRef<Folder>("c");
    parent->setParent(grandparent);
    grandparent->setName("d");
    EXPECT_EQ(told(), (Told{R"(title: "</b/a>" -> "</c/b/a>")", R"(title: "</c/b/a>" -> "</d/b/a>")"}));
    parent->setParent(nullptr);
    EXPECT_FALSE(grandparent->isObserved());
    told();
    grandparent->setName("e");
    EXPECT_EQ(told(), Told{});
}

TEST_F(Observing, FollowsTheObjectsAlongItsPath) {
    auto name = observe(*folder_, "parent.name", note());
    auto count = observe(*folder_, "children.@count", note());
    const auto first = makeRef<Folder>("first");
    const auto second = makeRef<Folder>("second");
    folder_->setParent(first);
    first->setName("renamed");
    folder_->setParent(second);
    first->setName("again");
    second->setName("third");
    folder_->setParent(nullptr);
    second->setName("fourth");
    EXPECT_EQ(told(), (Told{R"(parent.name: none -> "first")", R"(parent.name: "first" -> "renamed")",
                            R"(parent.name: "renamed" -> "second")", R"(parent.name: "second" -> "third")",
                            R"(parent.name: "third" -> none)"}));
    folder_->setChildren({first});
    EXPECT_EQ(told(), Told{"children.@count: 0 -> 1"});

    // Replacing an object keeps the order in which observers are told.
    auto later = observe(*folder_, "parent", note());
    folder_->setParent(first);
    folder_->setParent(second);
    const Told all = told();
    ASSERT_EQ(all.size(), 4u);
    EXPECT_EQ(all[2].substr(0, 12), "parent.name:");
}

TEST_F(Observing, ObserversComeAndGoWhileTheyAreTold) {
    ObservationToken own, doomed, begun;
    int calls = 0;
    own = observe(*folder_, "size", [&, captured = std::string("still here, on the heap")](const Change&) {
        ++calls;
        own.cancel();
        doomed.cancel();
        begun = observe(*folder_, "size", note());
        EXPECT_EQ(captured, "still here, on the heap");
    });
    doomed = observe(*folder_, "size", [](const Change&) { ADD_FAILURE() << "cancelled"; });
    folder_->setSize(2);
    EXPECT_EQ(told(), Told{});
    folder_->setSize(3);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(told(), Told{"size: 2 -> 3"});
}

TEST_F(Observing, ChangesMadeByAnObserverAreToldInOrder) {
    auto first = observe(*folder_, "size", [this](const Change& change) {
        if (change.newValue == Value(2)) folder_->setSize(3);
    });
    auto second = observe(*folder_, "size", note());
    folder_->setSize(2);
    EXPECT_EQ(told(), Told{"size: 1 -> 3"});
}

TEST_F(Observing, AHandlerMayLetGoOfTheObject) {
    std::string names;
    auto token = observe(*folder_, "name", [&](const Change& change) {
        folder_ = nullptr;
        names += static_cast<Folder&>(change.object).name();
    });
    auto second = observe(*folder_, "name",
                          [&](const Change& change) { names += static_cast<Folder&>(change.object).name(); });
    Folder& folder = *folder_;
    folder.setName("x");
    EXPECT_EQ(names, "xx");
    token.cancel();  // the object is gone
}

TEST_F(Observing, EndsWithTheObjectThatWasAsked) {
    const auto parent = makeRef<Folder>("b");
    folder_->setParent(parent);
    auto token = observe(*folder_, "parent.name", note());
    parent->willChangeValueForKey("name");
    folder_ = nullptr;
    parent->didChangeValueForKey("name");
    parent->setName("c");
    EXPECT_EQ(told(), Told{});
    EXPECT_FALSE(parent->isObserved());
}

TEST_F(Observing, AnObjectOnThePathMayGoInTheMiddleOfItsAnnouncement) {
    folder_->setParent(makeRef<Folder>("b"));
    auto token = observe(*folder_, "parent.name", note());
    folder_->parent()->willChangeValueForKey("name");
    folder_->setParent(nullptr);
    told();
    folder_->setParent(makeRef<Folder>("c"));
    EXPECT_EQ(told(), Told{R"(parent.name: none -> "c")"});
}

TEST_F(Observing, WhatAHandlerThrowsReachesTheCallerAfterEverybodyWasTold) {
    auto first = observe(*folder_, "size", [](const Change&) { throw std::logic_error("handler"); });
    auto second = observe(*folder_, "size", note());
    EXPECT_THROW(folder_->setSize(2), std::logic_error);
    EXPECT_THROW(folder_->setSize(3), std::logic_error);
    EXPECT_EQ(told(), (Told{"size: 1 -> 2", "size: 2 -> 3"}));
}

TEST_F(Observing, ATokenMovesAndEndsWhatItReplaces) {
    auto token = observe(*folder_, "size", note());
    auto moved = std::move(token);
    folder_->setSize(2);
    EXPECT_EQ(told().size(), 1u);
    moved = observe(*folder_, "name", note());
    folder_->setSize(3);
    EXPECT_EQ(told(), Told{});
}

TEST_F(Observing, AnObjectWithoutHandlesIsToldOfAndNotTakenAway) {
    Folder folder("a");
    auto token = observe(folder, "name", note());
    folder.setName("b");
    EXPECT_EQ(told().size(), 1u);
}

}  // namespace
}  // namespace orvane
