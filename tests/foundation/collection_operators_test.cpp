#include <gtest/gtest.h>

#include <limits>

#include "tests/foundation/folder.h"

namespace orvane {
namespace {

using Array = Value::Array;

constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();

Value decimal(std::int64_t microseconds) { return DecimalSeconds(microseconds); }

TEST(CollectionOperators, AddUpInTheTypeOfTheNumbers) {
    const struct {
        Array numbers;
        Value sum;
        Value average;
    } cases[] = {
        {{}, 0, 0.0},
        {{1, 2, true}, 4, 4.0 / 3},
        {{1, Value(), 2}, 3, 1.5},
        {{largest, 1}, 0x1p63, 0x1p62},
        {{decimal(100'000), decimal(200'001)}, decimal(300'001), decimal(150'001)},
        {{decimal(-1), decimal(0)}, decimal(-1), decimal(-1)},
        {{decimal(1), decimal(0), decimal(0)}, decimal(1), decimal(0)},
        {{DecimalSeconds::max(), DecimalSeconds(1)}, static_cast<double>(largest) / 1e6 + 1e-6, {}},
        {{decimal(500'000), 1}, 1.5, 0.75},
        {{1, 0.5}, 1.5, 0.75},
    };
    for (const auto& each : cases) {
        const Value sum = valueForKeyPath(each.numbers, "@sum");
        EXPECT_EQ(sum.kindName(), each.sum.kindName());
        EXPECT_EQ(sum, each.sum);
        if (each.average.isNone()) continue;
        const Value average = valueForKeyPath(each.numbers, "@avg");
        EXPECT_EQ(average.kindName(), each.average.kindName());
        EXPECT_EQ(average, each.average);
    }
    EXPECT_THROW(valueForKeyPath(Array{1, "a"}, "@sum"), WrongValueError);
}

TEST(CollectionOperators, FindExtremesAndUnions) {
    EXPECT_EQ(valueForKeyPath(Array{2, 3.5, decimal(1), Value()}, "@max"), Value(3.5));
    EXPECT_EQ(valueForKeyPath(Array{"b", "a", "c"}, "@min"), Value("a"));
    EXPECT_EQ(valueForKeyPath(Array{}, "@max"), Value());
    EXPECT_EQ(valueForKeyPath(Array{Value()}, "@count"), Value(1));
    EXPECT_EQ(valueForKeyPath(Array{2, 1, Value(), 2}, "@unionOfObjects"), Value(Array{2, 1, 2}));
    EXPECT_EQ(valueForKeyPath(Array{2, 1, 2.0, "a", true, "a", decimal(1), Data{1}, Data{1}},
                              "@distinctUnionOfObjects"),
              Value(Array{2, 1, "a", decimal(1), Data{1}}));
    EXPECT_THROW(valueForKeyPath(Array{}, "@median"), UnknownKeyError);
    EXPECT_THROW(valueForKeyPath(Array{}, "@count.name"), UnknownKeyError);
}

TEST(CollectionOperators, FollowKeyPathsFromObjects) {
    const auto root = makeRef<Folder>("root");
    const auto left = makeRef<Folder>("left", 2);
    const auto right = makeRef<Folder>("right", 3);
    left->setChildren({makeRef<Folder>("a", 10), makeRef<Folder>("b", 20)});
    right->setChildren({makeRef<Folder>("a", 30)});
    right->setAge(DecimalSeconds(5));
    right->setParent(root);
    root->setChildren({left, right});

    const std::pair<std::string_view, Value> cases[] = {
        {"children.@count", 2},
        {"children.@sum.size", 5},
        {"children.@sum.age", decimal(5)},
        {"children.@sum.children.@sum.size", 60},
        {"children.@max.children.@count", 2},
        {"children.name", Array{"left", "right"}},
        {"children.age", Array{decimal(5)}},
        {"children.children.name", Array{Array{"a", "b"}, Array{"a"}}},
        {"children.@unionOfObjects.parent.name", Array{"root"}},
        {"parent.children.@count", Value()},
        {"children.@distinctUnionOfObjects.parent", Array{root}},
    };
    for (const auto& [keyPath, expected] : cases)
        EXPECT_EQ(root->valueForKeyPath(keyPath), expected) << keyPath;
    EXPECT_EQ(valueForKeyPath(Array{left, right}, "@avg.size"), Value(2.5));
    right->setParent(nullptr);
}

TEST(CollectionOperators, FindFewAmongManyInLinearTime) {
    std::vector<Ref<Folder>> folders;
    Array many;
    for (int i = 0; i < 20'000; ++i) folders.push_back(makeRef<Folder>());
    for (int i = 0; i < 200'000; ++i)
        many.push_back(folders[static_cast<std::size_t>(i * 7) % folders.size()]);
    EXPECT_EQ(collectionOperator("distinctUnionOfObjects", many, "").asArray()->size(), folders.size());
}

}  // namespace
}  // namespace orvane
