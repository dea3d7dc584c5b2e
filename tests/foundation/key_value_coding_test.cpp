#include <gtest/gtest.h>

#include "tests/foundation/folder.h"

namespace orvane {
namespace {

template <class Exception, class Action>
std::string messageOf(Action action) {
    try {
        action();
    } catch (const Exception& problem) {
        return problem.what();
    }
    return "nothing thrown";
}

TEST(KeyValueCoding, FollowsPathsThroughObjectsDictionariesAndLists) {
    const auto folder = makeRef<Folder>("a");
    folder->setParent(makeRef<Folder>("b"));
    const Value root =
        Dictionary{{"folder", folder}, {"list", Value::Array{folder, Dictionary{{"name", 1}}}}};
    EXPECT_EQ(valueForKeyPath(root, "folder.parent.name"), Value("b"));
    EXPECT_EQ(valueForKeyPath(root, "list.name"), Value(Value::Array{"a", 1}));
    EXPECT_EQ(valueForKeyPath(root, "absent.name"), Value());
    EXPECT_EQ(folder->valueForKeyPath("parent.parent.name"), Value());
    folder->setValueForKeyPath("c", "parent.name");
    EXPECT_EQ(folder->parent()->name(), "c");
    folder->setValueForKeyPath("d", "parent.parent.name");  // leads to none: nobody takes it

    const auto path = [&](std::string_view keyPath) {
        return messageOf<UnknownKeyError>([&] { folder->valueForKeyPath(keyPath); });
    };
    EXPECT_EQ(path("nme"), "Folder has no key \"nme\"");
    EXPECT_EQ(path("parent.nme"), "Folder has no key \"nme\"");
    EXPECT_EQ(path("name.length"), "text has no key \"length\"");
    EXPECT_EQ(path("parent."), "Folder has no key \"\"");
    EXPECT_EQ(messageOf<UnknownKeyError>([&] { folder->setValueForKey("x", "title"); }),
              "Folder has no key \"title\"");
}

TEST(KeyValueCoding, AnObjectWithoutHandlesIsNotTakenAway) {
    Folder folder("a");
    EXPECT_EQ(folder.valueForKeyPath("children.@count"), Value(0));
    EXPECT_EQ(folder.referenceCount(), 0u);
}

TEST(KeyValueCoding, SettersTakeWhatLosesNothing) {
    const auto folder = makeRef<Folder>();
    const auto second = Value(DecimalSeconds(1'000'000));
    const struct {
        std::string_view key;
        Value given;
        Value expected;  // none: refused
    } cases[] = {
        {"name", "x", "x"},
        {"name", 5, {}},
        {"name", Value(), {}},
        {"size", 7, 7},
        {"size", 7.0, 7},
        {"size", second, 1},
        {"size", true, 1},
        {"size", 7.5, {}},
        {"size", 0x1p63, {}},
        {"size", "7", {}},
        {"shared", 1, true},
        {"shared", 0.0, false},
        {"shared", 2, {}},
        {"age", 1, second},
        {"age", 1.0000004, second},
        {"age", "1", {}},
        {"age", std::int64_t{1} << 62, {}},
        {"parent", folder, folder},
        {"parent", "folder", {}},
        {"children", folder, {}},
        {"children", Value::Array{"x"}, {}},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(std::string(each.key) + " = " + each.given.description());
        if (each.expected.isNone()) {
            EXPECT_THROW(folder->setValueForKey(each.given, each.key), WrongValueError);
            continue;
        }
        folder->setValueForKey(each.given, each.key);
        EXPECT_EQ(folder->valueForKey(each.key), each.expected);
        EXPECT_EQ(folder->valueForKey(each.key).kindName(), each.expected.kindName());
    }
    for (const std::string_view key : {"age", "parent"}) {
        folder->setValueForKey(Value(), key);
        EXPECT_TRUE(folder->valueForKey(key).isNone());
    }
    folder->setValueForKey(Value::Array{folder}, "children");
    EXPECT_EQ(folder->children().size(), 1u);
    folder->setChildren({});

    EXPECT_EQ(messageOf<WrongValueError>([&] { folder->setValueForKey(5, "name"); }),
              "Folder.name: expected text, got integer 5");
    EXPECT_EQ(messageOf<WrongValueError>([&] { folder->setValueForKey(Value(), "size"); }),
              "Folder.size: expected integer, got none");
}

TEST(KeyTable, JoinsItsBaseAndFollowsDependencies) {
    const auto get = [](const KeyedObject&) { return Value(); };
    const KeyTable base("Base", nullptr, {{"a", get}, {"total", get, nullptr, {"a"}}});
    const KeyTable table("Derived", &base,
                         {{"total", get, nullptr, {"b.c"}}, {"b", get}, {"ab", get, nullptr, {"total"}}});
    EXPECT_EQ(table.keys().size(), 4u);
    EXPECT_EQ(table.find("b")->name, "b");
    EXPECT_EQ(base.find("b"), nullptr);
    EXPECT_EQ(table.keyPathsAffecting("total").size(), 2u);
    using Keys = std::vector<std::string_view>;
    EXPECT_EQ(table.keysAffectedBy("b"), (Keys{"b", "total", "ab"}));
    EXPECT_EQ(table.keysAffectedBy("a"), (Keys{"a", "total", "ab"}));
    EXPECT_EQ(base.keysAffectedBy("total"), (Keys{"total"}));
    EXPECT_EQ(table.keysAffectedBy("c"), (Keys{"c"}));
}

}  // namespace
}  // namespace orvane
