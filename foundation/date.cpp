#include "foundation/date.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

namespace orvane {

DecimalSeconds decimalSeconds(double seconds) {
    if (std::isnan(seconds)) return DecimalSeconds(0);
    const long double magnitude = std::fabs(static_cast<long double>(seconds));
    if (magnitude * 1e6L >= 0x1p63L) return seconds < 0 ? DecimalSeconds::min() : DecimalSeconds::max();
    const auto whole = static_cast<std::int64_t>(seconds);
    if (static_cast<double>(whole) == seconds) return DecimalSeconds(whole * 1'000'000);
    // The text form rounds the exact value; reading its digits keeps that rounding.
    char text[64];
    const auto result = std::to_chars(text, text + sizeof text, seconds, std::chars_format::fixed, 6);
    std::int64_t digits = 0;
    bool negative = false;
    for (const char* place = text; place != result.ptr; ++place) {
        if (*place == '-')
            negative = true;
        else if (*place != '.')
            digits = digits * 10 + (*place - '0');
    }
    return DecimalSeconds(negative ? -digits : digits);
}

std::string decimalText(DecimalSeconds seconds) {
    const std::int64_t count = seconds.count();
    const auto magnitude =
        count < 0 ? ~static_cast<std::uint64_t>(count) + 1 : static_cast<std::uint64_t>(count);
    char text[48];
    std::snprintf(text, sizeof text, "%s%llu.%06llu", count < 0 ? "-" : "",
                  static_cast<unsigned long long>(magnitude / 1000000),
                  static_cast<unsigned long long>(magnitude % 1000000));
    return text;
}

std::string description(Date date) {
    using std::chrono::floor;
    const double seconds = secondsSinceEpoch(date);
    char text[64];
    if (!(seconds >= -62167219200.0 && seconds < 253402300800.0)) {  // the years 0 to 9999
        const auto end = std::to_chars(text, text + sizeof text, seconds).ptr;
        return {text, end};
    }
    const std::chrono::sys_time<DecimalSeconds> micros(decimalSeconds(seconds));
    const auto day = floor<std::chrono::days>(micros);
    const std::chrono::year_month_day calendar(day);
    const std::chrono::hh_mm_ss time(micros - day);
    const int length =
        std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d", static_cast<int>(calendar.year()),
                      static_cast<unsigned>(calendar.month()), static_cast<unsigned>(calendar.day()),
                      static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                      static_cast<int>(time.seconds().count()));
    std::string result(text, static_cast<std::size_t>(length));
    if (time.subseconds().count() != 0) {
        std::snprintf(text, sizeof text, ".%06d", static_cast<int>(time.subseconds().count()));
        result += text;
    }
    return result + "Z";
}

}  // namespace orvane
