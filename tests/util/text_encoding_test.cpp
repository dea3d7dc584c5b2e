#include "util/text_encoding.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <random>

namespace orvane {
namespace {

TEST(TextEncoding, illFormedBytesAreReplacedPartByPart) {
    const struct {
        std::string_view bytes;
        std::u16string_view units;
    } cases[] = {
        {std::string_view("a\0b", 3), std::u16string_view(u"a\0b", 3)},
        {"\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF", u"\u0080\u07FF\u0800\uFFFF"},
        {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\U00010000\U0010FFFF"},
        {"\x80\xBF\xFE", u"\uFFFD\uFFFD\uFFFD"},
        {"\xC0\xAF\xC1", u"\uFFFD\uFFFD\uFFFD"},            // overlong
        {"\xE0\x9F\x80", u"\uFFFD\uFFFD\uFFFD"},            // overlong
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},            // a surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond U+10FFFF
        {"\xE2\x82", u"\uFFFD"},                            // cut off
        {"\xF0\x9F\x98\x41", u"\uFFFDA"},
        {"\xF1\x80\x80\xE1\x80\xC2\x62", u"\uFFFD\uFFFD\uFFFDb"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(utf16(each.bytes), each.units) << testing::PrintToString(each.bytes);
}

TEST(TextEncoding, unpairedSurrogatesAreReplaced) {
    EXPECT_EQ(utf8(u"a\xD83D"), "a\xEF\xBF\xBD");
    EXPECT_EQ(utf8(u"\xDE00\xD83D"), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(utf8(u"\xD83D\xD83D\xDE00"), "\xEF\xBF\xBD\xF0\x9F\x98\x80");
}

TEST(TextEncoding, everyCharacterSurvives) {
    for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
        if (codePoint == 0xD800) codePoint = 0xE000;
        char bytes[6];
        const auto length = static_cast<std::size_t>(g_unichar_to_utf8(codePoint, bytes));
        const std::string_view text(bytes, length);
        ASSERT_EQ(utf8(utf16(text)), text) << std::hex << std::uint32_t{codePoint};
    }
}

TEST(TextEncoding, anyBytesBecomeValidAndStaySo) {
    std::mt19937 random(3);
    const std::string_view alphabet("a\x7F\x80\x8F\x90\x9F\xA0\xBF\xC1\xC2\xE0\xE1\xED\xEF\xF0\xF3\xF4\xF5",
                                    18);
    for (int round = 0; round < 50000; ++round) {
        std::string bytes(random() % 9, 'a');
        for (char& byte : bytes) byte = alphabet[random() % alphabet.size()];
        const std::string valid = utf8(utf16(bytes));
        ASSERT_TRUE(g_utf8_validate(valid.data(), static_cast<gssize>(valid.size()), nullptr));
        ASSERT_EQ(valid == bytes, g_utf8_validate(bytes.data(), static_cast<gssize>(bytes.size()), nullptr));
        ASSERT_EQ(utf8(utf16(valid)), valid);
    }
}

}  // namespace
}  // namespace orvane
