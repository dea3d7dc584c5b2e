#include "foundation/predicate.h"

#include <gtest/gtest.h>

#include <random>

#include "foundation/key_table.h"
#include "foundation/predicate_node.h"

namespace orvane {
namespace {

using namespace std::literals;
using Arguments = std::vector<Value>;

Predicate read(std::string_view format, const Arguments& arguments = {}) {
    return Predicate::withFormat(format, std::span<const Value>(arguments));
}

const Date noon = dateFromSecondsSinceEpoch(1'772'452'800);

class Person : public KeyedObject {
  public:
    Person(std::string name, Ref<Person> boss = {}) : name_(std::move(name)), boss_(std::move(boss)) {}

    const KeyTable& keyTable() const override {
        static const KeyTable table(
            "Person", nullptr,
            {{"name", [](const KeyedObject& p) { return Value(static_cast<const Person&>(p).name_); }},
             {"boss", [](const KeyedObject& p) { return Value(static_cast<const Person&>(p).boss_); }}});
        return table;
    }

  private:
    std::string name_;
    Ref<Person> boss_;
};

TEST(PredicateText, ReadsBackWhatItDescribes) {
    const struct {
        std::string_view format;
        Arguments arguments;
        std::string_view description;
    } cases[] = {
        {"a=1", {}, "a == 1"},
        {"a<>b and c =< d OR e => f", {}, "(a != b AND c <= d) OR e >= f"},
        {"a == 1 AND (b == 2 OR c == 3) && !d == 4", {}, "a == 1 AND (b == 2 OR c == 3) AND NOT (d == 4)"},
        {"not not truePredicate", {}, "NOT (NOT (TRUEPREDICATE))"},
        {"((FALSEPREDICATE))", {}, "FALSEPREDICATE"},
        {"a like[DC] 'x*' && b==[c]\"y\"", {}, "a LIKE[cd] \"x*\" AND b ==[c] \"y\""},
        {"a between{1,2.5}", {}, "a BETWEEN {1, 2.5}"},
        {"a BETWEEN %@", {Value::Array{1, 2}}, "a BETWEEN {1, 2}"},
        {"a IN {}", {}, "a IN {}"},
        {"a IN {1, {b.c, nil}, SELF}", {}, "a IN {1, {b.c, NULL}, SELF}"},
        {"SELF.a == self", {}, "a == SELF"},
        {"Self.in == %@ || in.x == 1", {}, ""},
        {"Self.in == %@ || in.x == 1", {true}, "SELF.in == TRUE OR in.x == 1"},
        {"%K == %@ AND %K > 0", {"no", Value(), "SELF.x"}, "SELF.no == NULL AND SELF.SELF.x > 0"},
        {"recordings.@count > 3 AND @count == 0 AND r.@sum.d > 1",
         {},
         "recordings.@count > 3 AND @count == 0 AND r.@sum.d > 1"},
        {"a == -9223372036854775808 OR a == 9223372036854775808",
         {},
         "a == -9223372036854775808 OR a == 9223372036854775808.0"},
        {"a IN {.5, 5., +7, 1e3, 2.0, -0.0}", {}, "a IN {0.5, 5.0, 7, 1000.0, 2.0, -0.0}"},
        {R"(a == 'it\'s "\\\t\n\u00e9\ud83d\ude00\u0001')", {}, "a == \"it's \\\"\\\\\\t\\né😀\\u0001\""},
        {"a == '%@ %K AND'", {}, "a == \"%@ %K AND\""},
        {"größe == 1", {}, "größe == 1"},
    };
    for (const auto& each : cases) {
        const auto predicate = Predicate::parse(each.format, each.arguments);
        EXPECT_EQ(predicate.has_value(), !each.description.empty()) << each.format;
        if (!predicate) continue;
        const std::string description = predicate->description();
        EXPECT_EQ(read(description).description(), description);
        EXPECT_EQ(description, each.description);
    }
}

TEST(PredicateText, ErrorsPointAtThePlace) {
    const struct {
        std::string_view format;
        Arguments arguments;
        std::size_t position;
        std::string_view problem;
    } cases[] = {
        {"", {}, 0, "a key path, a value or a place holder"},
        {"a", {}, 1, "a comparison"},
        {"a ==", {}, 4, "a key path, a value"},
        {"startDate >= AND b == 1", {}, 13, "a key path, a value"},
        {"a == 1 b == 2", {}, 7, "AND, OR or the end"},
        {"(a == 1", {}, 7, "\")\""},
        {"a == 1)", {}, 6, "the end"},
        {"a IN {1, 2", {}, 10, "\",\" or \"}\""},
        {"a IN {1,}", {}, 8, "a value"},
        {"a BETWEEN {1, 2, 3}", {}, 10, "a list of two"},
        {"a BETWEEN {b}", {}, 10, "a list of two"},
        {"a BETWEEN[c] {1, 2}", {}, 9, "no modifier"},
        {"a ==[cx] 'b'", {}, 6, "[cd]"},
        {"a ==[cc] 'b'", {}, 6, "[cd]"},
        {"a ==[c", {}, 6, "[cd]"},
        {"a == 'b", {}, 5, "closing quotation mark"},
        {"a == 'b\\", {}, 7, "an escape"},
        {"a == 'b\\q'", {}, 7, "an escape"},
        {"a == '\\u12G4'", {}, 6, "four hexadecimal"},
        {"a == '\\u12", {}, 6, "four hexadecimal"},
        {"a == '\\ud800\\u0041'", {}, 6, "surrogate"},
        {"a == '\\udc00'", {}, 6, "surrogate"},
        {"a == 0x10", {}, 5, "decimal number"},
        {"a == 1.2.3", {}, 5, "decimal number"},
        {"a == 1e", {}, 5, "decimal number"},
        {"a == -", {}, 5, "decimal number"},
        {"a == 1e999", {}, 5, "range"},
        {"a. == 1", {}, 2, "a key"},
        {"a == @", {}, 5, "a key"},
        {"a.b c", {}, 4, "a comparison"},
        {"in == 1", {}, 0, "a key path"},
        {"a == %d", {}, 5, "%@ or %K"},
        {"a == %@ AND b == %@", {1}, 17, "only 1 were given"},
        {"a == %@", {1, 2}, 7, "2 for 1"},
        {"%K == 1", {3}, 0, "key path as text"},
        {"%K == 1", {"a..b"}, 0, "key path as text"},
        {"%K == 1", {"a == 1 OR b"}, 0, "key path as text"},
    };
    for (const auto& each : cases) {
        try {
            read(each.format, each.arguments);
            ADD_FAILURE() << each.format << " was read";
        } catch (const PredicateSyntaxError& error) {
            EXPECT_EQ(error.position(), each.position) << error.what();
            EXPECT_NE(std::string_view(error.what()).find(each.problem), std::string_view::npos)
                << error.what();
        }
    }
}

TEST(PredicateText, ErrorsReachWhoPassedTextFromOutside) {
    Error error;
    EXPECT_FALSE(Predicate::parse("größe\t== \xff AND", {}, &error));
    EXPECT_EQ(error.domain(), "OrvanePredicateErrorDomain");
    EXPECT_EQ(error.code(), 1);
    // The byte 0xFF may begin a key; the caret stands under the end, by code points.
    EXPECT_EQ(error.localizedDescription(), "größe == \uFFFD AND\n" + std::string(14, ' ') +
                                                "^\nexpected a key path, a value or a place holder");
    EXPECT_FALSE(Predicate::parse("a ==", {}));

    const std::string filler(500, 'x');
    EXPECT_FALSE(Predicate::parse(filler + " § 1 " + filler, {}, &error));
    EXPECT_LT(error.localizedDescription().size(), 400u);
}

TEST(PredicateText, HostileNestingIsAnError) {
    for (const std::string_view piece : {"(", "NOT ", "!", "a IN {", "{"}) {
        std::string text = piece == "{" ? "a IN " : "";
        for (int i = 0; i < 100'000; ++i) text += piece;
        EXPECT_THROW(read(text), PredicateSyntaxError) << piece;
    }
    std::string chain = "a == 0";
    for (int i = 0; i < 20'000; ++i) chain += " OR a == 1";
    EXPECT_TRUE(read(chain).evaluate(Dictionary{{"a", 1}}));
}

TEST(PredicateText, ArbitraryBytesAreReadOrRefused) {
    const std::string_view pieces[] = {
        "a",    "b.c", "==",   "<",    "=",       "!",    "IN",      "{",    "}",
        "(",    ")",   ",",    "[c]",  "'",       "\"",   "\\u0041", "\\",   "AND",
        "or",   "not", "%@",   "%K",   "1",       "-2.5", "e9",      ".",    "@count",
        "SELF", " ",   "\xc3", "\xa9", "BETWEEN", "LIKE", "*",       "null", "TRUEPREDICATE"};
    const Arguments arguments{"x"};
    std::minstd_rand random(7);
    int accepted = 0;
    for (int i = 0; i < 20'000; ++i) {
        std::string text;
        for (auto length = random() % 14; length > 0; --length) {
            if (random() % 8 == 0)
                text += static_cast<char>(random());
            else
                text += std::string(pieces[random() % std::size(pieces)]) + (random() % 2 ? " " : "");
        }
        Error error;
        const auto used =
            std::span<const Value>(arguments).first(text.find('%') == std::string::npos ? 0 : 1);
        const auto predicate = Predicate::parse(text, used, &error);
        ASSERT_NE(predicate.has_value(), static_cast<bool>(error)) << text;
        if (!predicate) continue;
        ++accepted;
        ASSERT_EQ(read(predicate->description()).description(), predicate->description()) << text;
        predicate->evaluate(Value());
    }
    EXPECT_GT(accepted, 100);
}

TEST(PredicateEvaluation, ComparesByValueAndClass) {
    const Value none;
    const Value list = Value::Array{1, "Two", Value()};
    const Value one = Dictionary{{"none", none}, {"zero", 0},    {"one", 1},
                                 {"half", 0.5},  {"yes", true},  {"text", "Ab"},
                                 {"date", noon}, {"list", list}, {"span", DecimalSeconds(1'500'000)}};
    const struct {
        std::string_view format;
        bool expected;
        Arguments arguments = {};
    } cases[] = {
        // Absent values.
        {"none == NULL", true},
        {"none != NULL", false},
        {"NULL == missing", true},
        {"none.deeper.still == nil", true},
        {"none == 0", false},
        {"none != 0", true},
        {"one == NULL", false},
        {"one != NULL", true},
        {"none < 1", false},
        {"none >= NULL", false},
        {"NOT none < 1", true},
        {"none <= none", false},
        {"none CONTAINS 'a'", false},
        {"text CONTAINS none", false},
        {"none LIKE '*'", false},
        {"none BETWEEN {0, 1}", false},
        {"one BETWEEN {none, 1}", false},
        {"one BETWEEN {0, none}", false},
        // Classes.
        {"one == '1'", false},
        {"one != '1'", true},
        {"one < '2'", false},
        {"one >= '0'", false},
        {"date == 1772452800", false},
        {"date > 0", false},
        {"date == %@", true, {noon}},
        {"date < %@", false, {noon}},
        {"text BEGINSWITH 1", false},
        {"one LIKE '1'", false},
        {"list < list", false},
        {"text CONTAINS[c] 1", false},
        // Numbers, whatever their type.
        {"yes == 1", true},
        {"yes == one", true},
        {"zero == FALSE", true},
        {"one == 1.0", true},
        {"half < one", true},
        {"yes > half", true},
        {"span == 1.5", true},
        {"span BETWEEN {1.5, 2}", true},
        {"span > one", true},
        {"one BETWEEN {1, 1}", true},
        {"one BETWEEN {2, 0}", false},
        {"half BETWEEN %@", true, {Value::Array{0, 1}}},
        {"half BETWEEN %@", false, {Value::Array{0, 1, 2}}},
        {"half BETWEEN 1", false},
        {"half BETWEEN zero", false},
        {"9007199254740993 == 9007199254740992.0", false},
        {"9007199254740993 > 9007199254740992.0", true},
        // Lists.
        {"one IN {3, 1}", true},
        {"one IN {3, one}", true},
        {"one IN {'1'}", false},
        {"one IN {}", false},
        {"yes IN list", true},
        {"none IN list", true},
        {"none IN {1}", false},
        {"none IN none", false},
        {"text IN 'xAbx'", false},
        {"'two' IN list", false},
        {"'two' IN[c] list", true},
        {"list CONTAINS 'Two'", true},
        {"list CONTAINS[c] 'tWO'", true},
        {"list CONTAINS 2", false},
        {"list.@count == 3", true},
        {"list == {1, 'Two', NULL}", true},
        {"SELF == %@", true, {one}},
        {"{SELF} CONTAINS %@", true, {one}},
        // Texts.
        {"text == 'ab'", false},
        {"text ==[c] 'aB'", true},
        {"text !=[c] 'aB'", false},
        {"text < 'a'", true},
        {"text <[c] 'a'", false},
        {"text BETWEEN {'A', 'B'}", true},
        {"text BEGINSWITH 'A'", true},
        {"text BEGINSWITH 'b'", false},
        {"text ENDSWITH 'b'", true},
        {"text ENDSWITH 'A'", false},
        {"text CONTAINS ''", true},
        {"text CONTAINS 'Abc'", false},
        {"text BEGINSWITH[c] 'a'", true},
        {"'é' ==[d] 'E'", false},
        {"'é' ==[cd] 'E'", true},
        {"'Straße' ==[c] 'STRASSE'", true},
        {"'Crème brûlée' CONTAINS[cd] 'BRULEE'", true},
        {"'Öl' IN[cd] {'x', 'ol'}", true},
        // Joints.
        {"one == 1 OR zero == 1 AND zero == 2", true},
        {"(one == 1 OR zero == 1) AND zero == 2", false},
        {"NOT one == 1 OR one == 1", true},
        {"NOT (one == 1 OR one == 1)", false},
        {"!FALSEPREDICATE", true},
    };
    for (const auto& each : cases)
        EXPECT_EQ(read(each.format, each.arguments).evaluate(one), each.expected) << each.format;
}

TEST(PredicateEvaluation, ObjectsAreReadByKeyAndComparedByIdentity) {
    const auto boss = makeRef<Person>("Ada");
    const auto worker = makeRef<Person>("Bob", boss);
    const auto twin = makeRef<Person>("Ada");
    EXPECT_TRUE(read("boss == %@", {boss}).evaluate(*worker));
    EXPECT_FALSE(read("boss == %@", {twin}).evaluate(*worker));
    EXPECT_TRUE(read("SELF == %@ AND boss == NULL", {boss}).evaluate(*boss));
    EXPECT_TRUE(read("boss.name == 'Ada' AND boss.boss.name == nil").evaluate(Value(worker)));
    EXPECT_TRUE(read("SELF IN %@", Arguments{Value::Array{twin, worker}}).evaluate(*worker));
    EXPECT_THROW(read("salary > 1").evaluate(*worker), UnknownKeyError);
    EXPECT_FALSE(read("name == 'Bob' AND boss == NULL AND salary > 1").evaluate(*worker))
        << "stops at the first false";

    const std::vector<Ref<Person>> everyone{boss, worker, twin};
    EXPECT_EQ(read("name == 'Ada'").filter(everyone), (std::vector<Ref<Person>>{boss, twin}));
    EXPECT_EQ(read("SELF > 1").filter(std::vector<Value>{1, 3, "x", Value(), 2}), (std::vector<Value>{3, 2}));
}

TEST(PredicateEvaluation, PatternsMatchTheWholeText) {
    const struct {
        std::string_view text;
        std::string_view pattern;
        bool expected;
    } cases[] = {
        {"", "", true},           {"", "*", true},          {"", "?", false},        {"a", "", false},
        {"abc", "abc", true},     {"abc", "ab", false},     {"abc", "a*", true},     {"abc", "*b", false},
        {"abc", "*b*", true},     {"abc", "***c", true},    {"abc", "a?c", true},    {"abc", "????", false},
        {"aXbXc", "a*X?", true},  {"abab", "*ab", true},    {"aab", "*ab", true},    {"é", "?", true},
        {"é", "??", false},       {"日本語", "?本?", true}, {"日本語", "*語", true}, {"\xff\xfe", "??", true},
        {"\xe6\x97", "??", true}, {"a\0b"sv, "a?b", true},  {"*", "\\*", true},      {"x", "\\*", false},
        {"a?", "a\\?", true},     {"\\", "\\\\", true},     {"\\", "\\", true},      {"ab", "a\\b", true},
        {"a*b", "*\\*b", true},   {"AB", "ab", false},
    };
    for (const auto& each : cases)
        EXPECT_EQ(compareTexts(ComparisonOperator::like, each.text, each.pattern), each.expected)
            << each.text << " LIKE " << each.pattern;
    EXPECT_TRUE(compareValues(ComparisonOperator::like, true, true, "e\u0301T\u00c9*", "?te\\*"));

    // A matcher that tries every way to share the text out among the stars would never come back.
    std::string pattern;
    for (int i = 0; i < 40; ++i) pattern += "a*";
    EXPECT_FALSE(compareTexts(ComparisonOperator::like, std::string(2000, 'a'), pattern + "b"));
}

TEST(FoldedText, IgnoresWhatItIsToldTo) {
    const struct {
        std::string_view text;
        std::string_view withoutCase;
        std::string_view withoutMarks;
        std::string_view withoutBoth;
    } cases[] = {
        {"", "", "", ""},
        {"Ab@[`{Z", "ab@[`{z", "Ab@[`{Z", "ab@[`{z"},
        {"ÀÉ", "àé", "AE", "ae"},
        {"A\u0300", "à", "A", "a"},
        {"ΣΑΣ", "σασ", "ΣΑΣ", "σασ"},
        {"İ", "i̇", "I", "i"},
        {"한", "한", "한", "한"},
        {"ß", "ss", "ß", "ss"},
        {"x\xffY", "x\uFFFDy", "x\uFFFDY", "x\uFFFDy"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(foldedText(each.text, true, false), each.withoutCase);
        EXPECT_EQ(foldedText(each.text, false, true), each.withoutMarks);
        EXPECT_EQ(foldedText(each.text, true, true), each.withoutBoth);
        EXPECT_EQ(foldedText(each.withoutBoth, true, true), each.withoutBoth);
    }
    // The same with and without letters beyond ASCII beside it.
    EXPECT_EQ(foldedText("a\0b"sv, true, true) + "e", foldedText("a\0b\u00e9"sv, true, true));
}

}  // namespace
}  // namespace orvane
