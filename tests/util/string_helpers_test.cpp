#include "util/string_helpers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <stdexcept>

#include "util/localized_strings.h"
#include "util/string_replacement.h"
#include "util/text_encoding.h"
#include "util/url_encoding.h"

namespace orvane {
namespace {

using Text = std::u16string;
using TextView = std::u16string_view;
constexpr auto npos = Text::npos;

struct Case {
    TextView text;
    TextView expected;
};

template <std::size_t count>
void expectAll(Text (*operation)(TextView), const Case (&cases)[count]) {
    for (const Case& each : cases) EXPECT_EQ(operation(each.text), each.expected) << utf8(each.text);
}

TEST(StringHelpers, addSpaces) {
    EXPECT_EQ(addSpaces(u"abc", 3), u"   abc");
    EXPECT_EQ(addSpaces(u"abc", 0), u"abc");
    EXPECT_EQ(addSpaces(Null{}, 3), u"");
    EXPECT_THROW(addSpaces(u"abc", -1), std::out_of_range);
    EXPECT_THROW(addSpaces(u"abc", std::numeric_limits<std::int64_t>::max()), std::logic_error);
}

TEST(StringHelpers, deletingTheLast) {
    EXPECT_EQ(arrayByDeletingLastObject(std::vector{1, 2, 3}), (std::vector{1, 2}));
    EXPECT_TRUE(arrayByDeletingLastObject(std::vector<int>{}).empty());
    const Case cases[] = {{u"", u""},
                          {u"one", u""},
                          {u"one two", u"one"},
                          {u"one two ", u"one two"},
                          {u"one  two", u"one "},
                          {u"one\ttwo\nthree", u""}};
    expectAll(stringByDeletingLastWord, cases);
}

TEST(StringHelpers, numberValue) {
    const struct {
        TextView text;
        std::int32_t value;
    } cases[] = {{u"42abc", 42},
                 {u"", 0},
                 {u"-", 0},
                 {u"- 1", 0},
                 {u"\u00A0\t\n -7.9", -7},
                 {u"+0012", 12},
                 {u"\u0661", 0},
                 {u"2147483648", 2147483647},
                 {u"-2147483648", std::numeric_limits<std::int32_t>::min()},
                 {u"-99999999999999999999999", std::numeric_limits<std::int32_t>::min()},
                 {u"99999999999999999999999", 2147483647}};
    for (const auto& each : cases) EXPECT_EQ(numberValue(each.text), each.value) << utf8(each.text);
}

TEST(StringHelpers, pathFromEmail) {
    const Case cases[] = {
        {u"Qwe.Rt@Zxcv", u"qw/zx/qwe.rt/zxcv"},
        {u"a@b", u"a//a/b"},
        {u"ab@cd", u"ab/cd/ab/cd"},
        {u"x@y@z", u"x//x/y"},
        {u"x@@z", u"x//x/"},
        {u"AB@", u"ab//ab/"},
        {u"No At", u"No At"},
        {u"", u""},
        {u"ÄΣI@ΟΣ.Σ", u"äσ/ος/äσi/ος.σ"},
        {u"\u0130@xy", u"i\u0307/xy/i\u0307/xy"},
        {u"a\U0001F600@xy", u"a\xD83D/xy/a\U0001F600/xy"},
        {u"\xDC00\U00010400@xy", u"\xDC00\xD801/xy/\xDC00\U00010428/xy"},
    };
    expectAll(pathFromEmail, cases);
    EXPECT_THROW(pathFromEmail(u"@b"), std::out_of_range);
}

TEST(StringHelpers, cutting) {
    const Case cases[] = {{u"", u""}, {u"he", u"he"}, {u"hello", u"he"}, {u"a\U0001F600", u"a\xD83D"}};
    expectAll(firstCharacter, cases);
    EXPECT_THROW(firstCharacter(u"h"), std::out_of_range);

    const struct {
        TextView text;
        std::int64_t length;
        TextView expected;
    } truncations[] = {
        {u"abcdefgh", 5, u"abcd…"},      {u"abcdefgh", 8, u"abcdefgh"},
        {u"abcdefgh", 7, u"abcdef…"},    {u"abcdefgh", 1, u"…"},
        {u"abcdefgh", -1, u"abcdefgh"},  {u"", 0, u""},
        {u"\U0001F600b", 2, u"\xD83D…"}, {u"ab", std::numeric_limits<std::int64_t>::min(), u"ab"}};
    for (const auto& each : truncations)
        EXPECT_EQ(truncateToLength(each.text, each.length), each.expected) << utf8(each.text);
    EXPECT_THROW(truncateToLength(u"a", 0), std::out_of_range);
}

TEST(StringHelpers, singleLine) {
    const Case cases[] = {{u"", u""},
                          {u" \n\t\u2029\u3000", u""},
                          {u"\r\n say\n\"hi\"\r\n", u"say ″hi″"},
                          {u"a\rb\u2028c", u"a\rb\u2028c"},
                          {u"\u0085\u00A0a\u200B", u"a\u200B"}};
    expectAll(singleLine, cases);
}

TEST(StringHelpers, md5String) {
    const Case cases[] = {{u"", u"D41D8CD98F00B204E9800998ECF8427E"},
                          {u"abc", u"900150983CD24FB0D6963F7D28E17F72"},  // RFC 1321, A.5
                          {TextView(u"abc\0def", 7), u"900150983CD24FB0D6963F7D28E17F72"}};
    expectAll(md5String, cases);
    EXPECT_EQ(md5String(u"é"), u"66DDCD97CFDEABB2F6FB8A999B4BC76F");
    EXPECT_EQ(md5String(u"\xD800"), md5String(u"\uFFFD"));
}

TEST(StringHelpers, replacing) {
    const Case cases[] = {{u"a/b:c?d", u"ab:cd"}, {u"/\\\r\n?%*|\"<>", u""}, {u"a'b\t.", u"a'b\t."}};
    expectAll(stringBySanitizingForFileName, cases);
    EXPECT_EQ(stringBySanitizingForFileName(u"a//b", u"-"), u"a--b");
    EXPECT_EQ(stringBySanitizingForFileName(u"a%", u"%%"), u"a%%");

    const auto replace = stringByReplacingOccurrencesOfCharactersInSetWithString;
    EXPECT_EQ(replace(u"axb", CharacterSet(u"x"), u"xx"), u"axxb");
    EXPECT_EQ(replace(u"xxa", CharacterSet(u"ax"), u""), u"");
    EXPECT_EQ(replace(u"axb", CharacterSet(), u"-"), u"axb");
    // Half a surrogate pair is another character than the pair.
    EXPECT_EQ(replace(u"\U0001F600\xD83D", CharacterSet(u"\xD83D"), u"-"), u"\U0001F600-");
    EXPECT_EQ(replace(u"\U0001F600\U0001F601", CharacterSet(u"b\U0001F601"), u"-"), u"\U0001F600-");
}

TEST(StringHelpers, URLEncoding) {
    const struct {
        TextView text;
        std::optional<Text> expected;
    } cases[] = {{u"", u""},
                 {u"a b&c", u"a%20b%26c"},
                 {u"~-._azAZ09", u"~-._azAZ09"},
                 {u"é\U0001F600", u"%C3%A9%F0%9F%98%80"},
                 {u"%20+", u"%2520%2B"},
                 {u"!*'();:@&=$,/?#[]", u"%21%2A%27%28%29%3B%3A%40%26%3D%24%2C%2F%3F%23%5B%5D"},
                 {TextView(u"\0\x7F\"<\\^`{|}", 10), u"%00%7F%22%3C%5C%5E%60%7B%7C%7D"},
                 {u"a\xD83D", std::nullopt},
                 {u"\xDE00\xD83D", std::nullopt}};
    for (const auto& each : cases)
        EXPECT_EQ(stringByURLEncoding(each.text), each.expected) << utf8(each.text);
}

TEST(StringHelpers, localizedString) {
    setLocalizedStrings({{u"Quit", u"Beenden"}, {u"Mute", u""}});
    EXPECT_EQ(localizedString(u"Quit"), u"Beenden");
    EXPECT_EQ(localizedString(u"Mute"), u"");
    EXPECT_EQ(localizedString(u"quit"), u"quit");
    setLocalizedStrings({});
    EXPECT_EQ(localizedString(u"Quit"), u"Quit");
}

TEST(StringHelpers, anyUnits) {
    std::mt19937 random(11);
    const TextView alphabet(u"a@ \n\"0-9/%\u00A0Σ\xD83D\xDE00\0", 15);
    for (int round = 0; round < 20000; ++round) {
        Text text(random() % 10, u' ');
        for (char16_t& unit : text) unit = alphabet[random() % alphabet.size()];
        const auto length = static_cast<std::int64_t>(random() % 10 + 1);

        const Text truncated = truncateToLength(text, length);
        ASSERT_EQ(truncated.size(), std::min(text.size(), static_cast<std::size_t>(length)));
        const Text line = singleLine(text);
        ASSERT_EQ(line.find_first_of(u"\n\""), npos);
        ASSERT_EQ(singleLine(line), line);
        const Text fileName = stringBySanitizingForFileName(text);
        ASSERT_EQ(fileName.find_first_of(u"/%\n\""), npos);
        ASSERT_EQ(stringBySanitizingForFileName(text, u"xy").size(), 2 * text.size() - fileName.size());
        ASSERT_EQ(md5String(text).size(), 32U);
        const auto encoded = stringByURLEncoding(text);
        ASSERT_EQ(encoded.has_value(), utf16(utf8(text)) == text);
        const std::size_t at = text.find(u'@');
        if (at != 0 && at != npos) {
            const Text path = pathFromEmail(text);
            ASSERT_GE(std::count(path.begin(), path.end(), u'/'), 3);
            ASSERT_EQ(path.find(u'@'), npos);
        }
    }
}

}  // namespace
}  // namespace orvane
