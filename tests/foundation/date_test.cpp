#include "foundation/date.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace orvane {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(DecimalSeconds, RoundAsTheTextFormDoes) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> mantissa(-1, 1);
    std::uniform_int_distribution<int> exponent(-30, 43);
    std::vector<double> spans = {0.0000005,
                                 0.0000015,
                                 0.0000025,
                                 2.5e-7,
                                 -0.0,
                                 1.0000004,
                                 0.9999995,
                                 86400,
                                 1e12,
                                 1772452800.1234565,
                                 0x1p-7,
                                 3 * 0x1p-7,
                                 9223372036854.775390625};
    for (int i = 0; i < 200'000; ++i) spans.push_back(std::ldexp(mantissa(random), exponent(random)));
    // Halfway between two microseconds, where rounding is decided by the exact value.
    for (int i = 0; i < 20'000; ++i)
        spans.push_back(std::ldexp(static_cast<double>(random() % 100'000'000), -7));
    for (const double span : spans) {
        char text[64];
        std::snprintf(text, sizeof text, "%f", span);
        std::string expected = text;
        if (expected == "-0.000000") expected = "0.000000";
        ASSERT_EQ(decimalText(decimalSeconds(span)), expected) << span;
    }
}

TEST(DecimalSeconds, KeepWithinTheirRange) {
    EXPECT_EQ(decimalSeconds(std::nan("")), DecimalSeconds(0));
    for (const double beyond : {9223372036854.78, 1e300, infinity}) {
        EXPECT_EQ(decimalSeconds(beyond), DecimalSeconds::max());
        EXPECT_EQ(decimalSeconds(-beyond), DecimalSeconds::min());
    }
    EXPECT_EQ(decimalText(DecimalSeconds::min()), "-9223372036854.775808");
    EXPECT_EQ(decimalText(DecimalSeconds(-250'000)), "-0.250000");
}

TEST(Date, IsDescribedInUtcOrAsSeconds) {
    const struct {
        double seconds;
        std::string_view text;
    } cases[] = {{1772438400, "2026-03-02T08:00:00Z"},
                 {-0.25, "1969-12-31T23:59:59.750000Z"},
                 {951782400.000001, "2000-02-29T00:00:00.000001Z"},
                 {-62167219200, "0000-01-01T00:00:00Z"},
                 {253402300799, "9999-12-31T23:59:59Z"},
                 {253402300800, "253402300800"},
                 {-1e300, "-1e+300"},
                 {infinity, "inf"}};
    for (const auto& each : cases) EXPECT_EQ(description(dateFromSecondsSinceEpoch(each.seconds)), each.text);
}

}  // namespace
}  // namespace orvane
