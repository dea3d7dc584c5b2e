#include "platform/linux/x11/x11_text.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

using enum X11TextEncoding;
using namespace std::string_view_literals;

TEST(X11Text, ReadsEachEncodingAndStopsAtTheFirstZero) {
    EXPECT_EQ(decodeX11Text("na\xc3\xafve\0rest"sv, utf8), "naïve");
    EXPECT_EQ(decodeX11Text("\xc3\xaf", latin1), "Ã¯");
    EXPECT_EQ(decodeX11Text("\xc3\xaf", unknown), "ï");
    EXPECT_EQ(decodeX11Text("\xef", unknown), "ï");
    EXPECT_EQ(decodeX11Text("cut \xe2\x82", utf8), "cut \uFFFD\uFFFD");
    EXPECT_EQ(decodeX11Text("", compound), "");
}

TEST(X11Text, ReadsCompoundText) {
    EXPECT_EQ(decodeX11Text("plain \xe9", compound), "plain é");
    EXPECT_EQ(decodeX11Text("\x1b-L\xb4\xd0 \x1b-F\xe1", compound), "Да α");
    EXPECT_EQ(decodeX11Text("\x1b$(B\x46\x7c\x4b\x5c\x1b(B-\x1b$)B\xc6\xfc", compound), "日本-日");
    EXPECT_EQ(decodeX11Text("a\x1b%G\xe2\x82\xac\x1b%@\xe9", compound), "a€é");
    EXPECT_EQ(decodeX11Text("\x1b%/1\x80\x8ciso8859-15\x02\xa4!", compound), "€!"sv);
    EXPECT_EQ(decodeX11Text("\x9b\x31]right", compound), "right");
    // Escape sequences cut off, and a character set nobody knows.
    for (const auto broken : {"x\x1b"sv, "x\x1b$("sv, "x\x1b%/1\x80"sv, "x\x1b%/1\xff\xff"sv, "x\x9b"sv}) {
        EXPECT_EQ(decodeX11Text(broken, compound), "x");
    }
    EXPECT_EQ(decodeX11Text("\x1b-?\xe9 x", compound), "\uFFFD x");
}

}  // namespace
}  // namespace orvane
