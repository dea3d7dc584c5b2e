#include "host/replay/local_time_zone.h"

#include <cmath>
#include <cstdlib>
#include <ctime>

namespace orvane::host {

namespace {

constexpr const char* variable = "TZ";

std::string formatted(const Value& value, const char* format) {
    const Date* date = value.asDate();
    if (!date || !(std::abs(secondsSinceEpoch(*date)) < 1e15)) return {};
    const auto seconds = static_cast<std::time_t>(std::floor(secondsSinceEpoch(*date)));
    std::tm fields{};
    char text[32];
    if (!localtime_r(&seconds, &fields)) return {};
    return std::string(text, std::strftime(text, sizeof text, format, &fields));
}

}  // namespace

LocalTimeZone::LocalTimeZone(const std::string& name) {
    if (const char* before = std::getenv(variable)) before_ = before;
    setenv(variable, name.c_str(), 1);
    tzset();
}

LocalTimeZone::~LocalTimeZone() {
    if (before_)
        setenv(variable, before_->c_str(), 1);
    else
        unsetenv(variable);
    tzset();
}

// "%F" leaves out the zeros before years of fewer than four digits.
std::string shortDate(const Value& date) { return formatted(date, "%4Y-%m-%d"); }
std::string shortTime(const Value& date) { return formatted(date, "%H:%M"); }

}  // namespace orvane::host
