#include "host/date_range.h"

#include <charconv>
#include <cmath>
#include <ctime>
#include <vector>

#include "host/nearest.h"
#include "util/day_boundaries.h"

namespace orvane::host {

namespace {

constexpr double beginningOfTime = -62135596800.0;  // 0001-01-01T00:00:00Z
constexpr double endOfTime = 253402300799.0;        // 9999-12-31T23:59:59Z

std::tm localCalendar(Date date) {
    const auto seconds = static_cast<std::time_t>(std::floor(secondsSinceEpoch(date)));
    std::tm calendar{};
    ::localtime_r(&seconds, &calendar);
    return calendar;
}

/// The moment that the fields name in the local time zone; fields beyond their range carry over.
Date moment(std::tm calendar) {
    calendar.tm_isdst = -1;
    return dateFromSecondsSinceEpoch(static_cast<double>(std::mktime(&calendar)));
}

/// Noon of a day some days, months or years from the given one: safe from clock changes at midnight.
Date noonOf(std::tm calendar, int days) {
    calendar.tm_hour = 12;
    calendar.tm_min = 0;
    calendar.tm_sec = 0;
    calendar.tm_mday += days;
    return moment(calendar);
}

DateRange wholeDays(Date first, Date last) { return {orvaneDayStart(first), orvaneDayEnd(last)}; }

std::optional<DateRange> namedRange(std::string_view name, Date now) {
    std::tm today = localCalendar(now);
    if (name == "today") return wholeDays(now, now);
    if (name == "yesterday") return wholeDays(noonOf(today, -1), noonOf(today, -1));
    if (name == "week") {
        const int sinceMonday = (today.tm_wday + 6) % 7;
        return wholeDays(noonOf(today, -sinceMonday), noonOf(today, 6 - sinceMonday));
    }
    if (name == "month" || name == "year") {
        const bool year = name == "year";
        if (year) today.tm_mon = 0;
        today.tm_mday = 1;
        std::tm next = today;
        ++(year ? next.tm_year : next.tm_mon);
        return wholeDays(noonOf(today, 0), noonOf(next, -1));
    }
    if (name == "all")
        return DateRange{dateFromSecondsSinceEpoch(beginningOfTime), dateFromSecondsSinceEpoch(endOfTime)};
    return std::nullopt;
}

/// Reads a number of exactly that many digits.
std::optional<int> digits(std::string_view& text, std::size_t count) {
    int value = 0;
    if (text.size() < count) return std::nullopt;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + count, value);
    if (failure != std::errc() || end != text.data() + count || value < 0) return std::nullopt;
    text.remove_prefix(count);
    return value;
}

bool skip(std::string_view& text, char character) {
    if (!text.starts_with(character)) return false;
    text.remove_prefix(1);
    return true;
}

struct Moment {
    Date date;
    bool isWholeDay;
};

std::optional<Moment> parseMoment(std::string_view text) {
    std::tm calendar{};
    const auto year = digits(text, 4);
    if (!year || !skip(text, '-')) return std::nullopt;
    const auto month = digits(text, 2);
    if (!month || !skip(text, '-')) return std::nullopt;
    const auto day = digits(text, 2);
    if (!day || !std::chrono::year_month_day(std::chrono::year(*year),
                                             std::chrono::month(static_cast<unsigned>(*month)),
                                             std::chrono::day(static_cast<unsigned>(*day)))
                     .ok())
        return std::nullopt;
    calendar.tm_year = *year - 1900;
    calendar.tm_mon = *month - 1;
    calendar.tm_mday = *day;
    if (text.empty()) return Moment{noonOf(calendar, 0), true};
    if (!skip(text, 'T') && !skip(text, ' ')) return std::nullopt;
    const auto hour = digits(text, 2);
    if (!hour || *hour > 23 || !skip(text, ':')) return std::nullopt;
    const auto minute = digits(text, 2);
    if (!minute || *minute > 59) return std::nullopt;
    int second = 0;
    if (skip(text, ':')) {
        const auto read = digits(text, 2);
        if (!read || *read > 59) return std::nullopt;
        second = *read;
    }
    if (!text.empty()) return std::nullopt;
    calendar.tm_hour = *hour;
    calendar.tm_min = *minute;
    calendar.tm_sec = second;
    return Moment{moment(calendar), false};
}

}  // namespace

std::optional<DateRange> parseDateRange(std::string_view text, Date now, std::string& problem) {
    if (const auto named = namedRange(text, now)) return named;
    const std::size_t dots = text.find("..");
    const std::string_view first = text.substr(0, dots);
    const std::string_view last = dots == std::string_view::npos ? first : text.substr(dots + 2);
    const auto bound = [&](std::string_view part, bool isEnd) -> std::optional<Date> {
        if (part.empty() && dots != std::string_view::npos)
            return dateFromSecondsSinceEpoch(isEnd ? endOfTime : beginningOfTime);
        if (const auto named = namedRange(part, now)) return isEnd ? named->to : named->from;
        const auto read = parseMoment(part);
        if (!read) return std::nullopt;
        if (isEnd && (read->isWholeDay || dots == std::string_view::npos)) return orvaneDayEnd(read->date);
        return read->isWholeDay ? orvaneDayStart(read->date) : read->date;
    };
    const auto from = bound(first, false);
    const auto to = bound(last, true);
    if (from && to && *from <= *to) return DateRange{*from, *to};
    if (from && to)
        problem = "The range \"" + std::string(text) + "\" ends before it begins.";
    else
        problem =
            "\"" + std::string(text) + "\" is no range of dates." +
            nearestHint(text, {"today", "yesterday", "week", "month", "year", "all"}) +
            " Write today, yesterday, week, month, year, all, 2026-03-02, 2026-03-02T08:30 or FROM..TO.";
    return std::nullopt;
}

}  // namespace orvane::host
