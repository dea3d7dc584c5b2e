#include "foundation/sort_order.h"

#include <gtest/gtest.h>

#include "tests/foundation/folder.h"

namespace orvane {
namespace {

TEST(SortOrder, SortsByTheFirstOrderThatDiffersAndKeepsTies) {
    std::vector<Ref<Folder>> folders;
    for (const auto& [name, size] : {std::pair("b", 1), {"a", 2}, {"b", 2}, {"a", 2}})
        folders.push_back(makeRef<Folder>(name, size));
    folders[0]->setAge(DecimalSeconds(1));
    const auto before = folders;
    const SortOrder orders[] = {{"size", false}, {"name"}};
    sortUsing(folders, std::span(orders));
    EXPECT_EQ(folders, (std::vector{before[1], before[3], before[2], before[0]}));

    const SortOrder byAge[] = {{"age", false}};
    sortUsing(folders, std::span(byAge));
    EXPECT_EQ(folders, (std::vector{before[0], before[1], before[3], before[2]}));  // none comes last

    const auto kept = folders;
    const SortOrder unknown[] = {{"name"}, {"colour"}};
    EXPECT_THROW(sortUsing(folders, std::span(unknown)), UnknownKeyError);
    EXPECT_EQ(folders, kept);
}

TEST(SortOrder, OrdersValuesOfAllClasses) {
    const Value rising[] = {
        Value(),    -1,      0.5,           DecimalSeconds(2'000'000), dateFromSecondsSinceEpoch(0), "B",
        "\xc3\xa9", Data{1}, Value::Array{}};
    for (std::size_t i = 0; i < std::size(rising); ++i)
        for (std::size_t j = 0; j < std::size(rising); ++j) {
            const int order = compareForSorting(rising[i], rising[j]);
            EXPECT_EQ(order < 0, i < j) << i << ' ' << j;
            EXPECT_EQ(order == 0, i == j) << i << ' ' << j;
        }
}

}  // namespace
}  // namespace orvane
