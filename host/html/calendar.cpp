#include "host/html/calendar.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "host/terminal.h"
#include "util/day_boundaries.h"

namespace orvane::host {

namespace {

// 0001-01-02T00:00:00Z and 9999-12-30T23:59:59Z: every time zone shows them within the years 1 to 9999.
constexpr double firstMoment = -62135510400.0;
constexpr double lastMoment = 253402214399.0;

constexpr const char* dayNames[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                    "Thursday", "Friday", "Saturday"};
constexpr const char* monthNames[] = {"January", "February", "March",     "April",   "May",      "June",
                                      "July",    "August",   "September", "October", "November", "December"};

std::chrono::year_month_day civil(CalendarDay day) { return std::chrono::year_month_day(day); }
int yearOf(CalendarDay day) { return static_cast<int>(civil(day).year()); }
unsigned monthOf(CalendarDay day) { return static_cast<unsigned>(civil(day).month()); }
unsigned dayOf(CalendarDay day) { return static_cast<unsigned>(civil(day).day()); }
std::string dayName(CalendarDay day) { return dayNames[std::chrono::weekday(day).c_encoding()]; }
std::string monthName(CalendarDay day) { return monthNames[monthOf(day) - 1]; }

/// Both days, with so many letters of the months' names.
std::string spanText(CalendarDay first, CalendarDay last, std::size_t letters) {
    const std::string year = std::to_string(yearOf(last));
    std::string begin;
    if (first != last) begin = std::to_string(dayOf(first));
    if (yearOf(first) != yearOf(last))
        begin += " " + monthName(first).substr(0, letters) + " " + std::to_string(yearOf(first));
    else if (monthOf(first) != monthOf(last))
        begin += " " + monthName(first).substr(0, letters);
    return begin + (begin.empty() ? "" : " – ") + std::to_string(dayOf(last)) + " " +
           monthName(last).substr(0, letters) + " " + year;
}

}  // namespace

LocalMoment localMoment(Date date) {
    const double seconds = std::clamp(secondsSinceEpoch(date), firstMoment, lastMoment);
    const auto whole = static_cast<std::time_t>(std::floor(seconds));
    std::tm calendar{};
    ::localtime_r(&whole, &calendar);
    const double intoHour =
        calendar.tm_min * 60 + std::min(calendar.tm_sec, 59) + (seconds - static_cast<double>(whole));
    return {CalendarDay(std::chrono::year(calendar.tm_year + 1900) /
                        std::chrono::month(static_cast<unsigned>(calendar.tm_mon + 1)) /
                        std::chrono::day(static_cast<unsigned>(calendar.tm_mday))),
            calendar.tm_hour, 3600 - intoHour};
}

Date startOfDay(CalendarDay day) {
    // From noon backwards: a day may begin later than its midnight.
    std::tm calendar{};
    calendar.tm_year = yearOf(day) - 1900;
    calendar.tm_mon = static_cast<int>(monthOf(day)) - 1;
    calendar.tm_mday = static_cast<int>(dayOf(day));
    calendar.tm_hour = 12;
    calendar.tm_isdst = -1;
    return orvaneDayStart(dateFromSecondsSinceEpoch(static_cast<double>(std::mktime(&calendar))));
}

CalendarDay mondayOf(CalendarDay day) {
    return day - std::chrono::days((std::chrono::weekday(day) - std::chrono::Monday).count());
}

bool isWeekend(CalendarDay day) {
    const std::chrono::weekday weekday(day);
    return weekday == std::chrono::Saturday || weekday == std::chrono::Sunday;
}

std::string isoText(CalendarDay day) {
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u", yearOf(day), monthOf(day), dayOf(day));
    return text;
}

std::string shortText(CalendarDay day) {
    return dayName(day).substr(0, 3) + " " + std::to_string(dayOf(day)) + " " + monthName(day).substr(0, 3);
}

std::string longText(CalendarDay day) {
    return dayName(day) + ", " + std::to_string(dayOf(day)) + " " + monthText(day);
}

std::string spanText(CalendarDay first, CalendarDay last) {
    return first == last ? longText(first) : spanText(first, last, std::string::npos);
}

std::string shortSpanText(CalendarDay first, CalendarDay last) { return spanText(first, last, 3); }

std::string monthText(CalendarDay day) { return monthName(day) + " " + std::to_string(yearOf(day)); }

std::string timeOfDay(Date date) { return localText(date).substr(11, 5); }

std::string hoursText(DecimalSeconds duration) {
    const long long seconds = std::llabs(duration.count() / 1000000);
    char text[48];
    std::snprintf(text, sizeof text, "%s%lld:%02lld:%02lld", duration.count() < 0 ? "-" : "", seconds / 3600,
                  seconds / 60 % 60, seconds % 60);
    return text;
}

std::string spokenText(DecimalSeconds duration) {
    const long long seconds = duration.count() / 1000000;
    if (seconds < 60) return std::to_string(seconds) + " s";
    const std::string minutes = std::to_string(seconds / 60 % 60) + " min";
    return seconds < 3600 ? minutes : std::to_string(seconds / 3600) + " h " + minutes;
}

}  // namespace orvane::host
