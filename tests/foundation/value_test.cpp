#include "foundation/value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/foundation/folder.h"

namespace orvane {
namespace {

constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
constexpr double infinity = std::numeric_limits<double>::infinity();

Value micros(std::int64_t count) { return DecimalSeconds(count); }

/// Groups of equal numbers in rising order: every pair must compare as its groups do.
TEST(Value, NumbersCompareExactlyAcrossTypes) {
    const std::vector<std::vector<Value>> groups = {
        {-infinity},
        {-0x1p64},
        {smallest, -0x1p63},
        {smallest + 1},
        {micros(smallest)},
        {micros(smallest + 1)},
        {-1.0000005},
        {micros(-1'000'000), -1, -1.0},
        {micros(-999'999)},
        {micros(-1)},
        {-1e-300},
        {0, 0.0, -0.0, false, micros(0)},
        {std::numeric_limits<double>::denorm_min()},
        {0.000001 - 0x1p-70},
        // 1e-6 as a double lies below the decimal, 0.1 above.
        {0.000001},
        {micros(1)},
        {micros(15'625), 0x1p-6},
        {micros(100'000)},
        {0.1},
        {micros(999'999)},
        {1, 1.0, true, micros(1'000'000)},
        {1 + 0x1p-52},
        {micros(9'007'199'254'740'993)},
        {9'223'372'036'854LL * 1.0, std::int64_t{9'223'372'036'854}},
        {9'223'372'036'854.775390625},
        {micros(largest)},
        {0x1p53, std::int64_t{9'007'199'254'740'992}},
        {std::int64_t{9'007'199'254'740'993}},
        {0x1p53 + 2},
        {0x1p63 - 1024},
        {largest},
        {0x1p63},
        {infinity}};
    for (std::size_t i = 0; i < groups.size(); ++i)
        for (std::size_t j = 0; j < groups.size(); ++j)
            for (const Value& left : groups[i])
                for (const Value& right : groups[j]) {
                    SCOPED_TRACE(std::string(left.kindName()) + " " + left.description() + " against " +
                                 std::string(right.kindName()) + " " + right.description());
                    EXPECT_EQ(left.compare(right), i < j ? -1 : i > j ? 1 : 0);
                    EXPECT_EQ(left == right, i == j);
                    EXPECT_TRUE(i != j || left.hash() == right.hash());
                }
}

/// A decimal lies strictly between the doubles beside it; it is one only when it is a sum of halves of
/// halves.
TEST(Value, DecimalsAndDoublesCompareExactlyAtTheSmallestDistance) {
    for (std::int64_t count = 1; count < 1'000'000; count += 7) {
        const double nearest = static_cast<double>(count) / 1e6;
        const bool exact = count % 15'625 == 0;
        ASSERT_EQ(micros(count) == Value(nearest), exact);
        ASSERT_EQ(micros(count).compare(std::nextafter(nearest, 2)), -1);
        ASSERT_EQ(Value(std::nextafter(nearest, 0)).compare(micros(count)), -1);
    }
}

TEST(Value, OtherKindsCompareWithTheirOwnClassOnly) {
    const Value date = dateFromSecondsSinceEpoch(1);
    EXPECT_EQ(Value("\x7f").compare("\xc3\xa9"), -1);  // unsigned bytes
    EXPECT_EQ(Value("a").compare(std::string_view("a\0", 2)), -1);
    EXPECT_EQ(Value(Data{0x80}).compare(Data{0x7f, 0xff}), 1);
    EXPECT_EQ(date.compare(dateFromSecondsSinceEpoch(1.5)), -1);
    EXPECT_EQ(date.compare(1), std::nullopt);
    EXPECT_EQ(Value("1").compare(1), std::nullopt);
    EXPECT_EQ(Value(Value::Array{1}).compare(Value::Array{2}), std::nullopt);
    EXPECT_FALSE(date == Value(1) || Value("") == Value() || Value(Data{}) == Value(""));

    EXPECT_TRUE(Value(std::nan("")).isNone());
    EXPECT_TRUE(Value(nullptr).isNone());
    EXPECT_EQ(Value(std::optional<bool>()), Value());
    EXPECT_FALSE((std::is_convertible_v<int*, Value>));

    const Value lists[] = {Value::Array{1, "a"}, Value::Array{1.0, "a"}};
    const Value dictionaries[] = {Dictionary{{"a", 1}, {"b", "x"}}, Dictionary{{"b", "x"}, {"a", true}}};
    const Value colors[] = {Color{0, 1, 0, 1}, Color{-0.0, 1, 0, 1}};
    for (const auto& pair : {lists, dictionaries, colors}) {
        EXPECT_EQ(pair[0], pair[1]);
        EXPECT_EQ(pair[0].hash(), pair[1].hash());
    }
    EXPECT_FALSE(dictionaries[0] == Value(Dictionary{{"a", 1}, {"c", "x"}}));
    const auto folder = makeRef<Folder>("a");
    EXPECT_EQ(Value(folder), Value(Ref<KeyedObject>(folder)));
    EXPECT_FALSE(Value(folder) == Value(makeRef<Folder>("a")));
}

TEST(Value, ConvertsNumbersWithinRange) {
    EXPECT_EQ(Value(1e300).integerValue(), largest);
    EXPECT_EQ(Value(-1e300).integerValue(), smallest);
    EXPECT_EQ(Value(-1.9).integerValue(), -1);
    EXPECT_EQ(micros(-1'999'999).integerValue(), -1);
    EXPECT_EQ(micros(1'250'000).doubleValue(), 1.25);
    EXPECT_TRUE(micros(1).boolValue());
    EXPECT_EQ(Value("7").integerValue(), 0);
}

TEST(Dictionary, KeepsTheOrderOfItsKeys) {
    Dictionary dictionary{{"b", 1}, {"a", "x\n\"y\""}};
    dictionary.set("c", Value::Array{1.5, Value()});
    dictionary.set("b", true);
    EXPECT_EQ(dictionary.description(), R"({ b = true; a = "x\n\"y\""; c = (1.5, none); })");
    dictionary.set("a", Value());
    EXPECT_FALSE(dictionary.contains("a"));
    EXPECT_EQ(dictionary.size(), 2u);
}

}  // namespace
}  // namespace orvane
