#include "platform/linux/system_log.h"

#include <gtest/gtest.h>

namespace orvane::testing {
namespace {

TEST(SystemLogTest, ALineStaysOneLine) {
    using namespace std::string_view_literals;
    EXPECT_EQ(SystemLog::visibleLine("Grüße „x“ \\ 日本"), "Grüße „x“ \\ 日本");
    EXPECT_EQ(SystemLog::visibleLine("a\nb\tc\x1b[31m\x7f\r"), "a\\nb\\tc\\x1b[31m\\x7f\\x0d");
    EXPECT_EQ(SystemLog::visibleLine("a\0b"sv), "a\\x00b");
    EXPECT_EQ(SystemLog::visibleLine("\xc2\x9b"
                                     "2J"),
              "\\xc2\\x9b2J");
    EXPECT_EQ(SystemLog::visibleLine("\xff\xc3"), "\\xff\\xc3");
}

}  // namespace
}  // namespace orvane::testing
