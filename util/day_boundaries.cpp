#include "util/day_boundaries.h"

#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

namespace orvane {

namespace {

using Seconds = std::int64_t;

constexpr Seconds hour = 3600;
constexpr Seconds secondsPerDay = 24 * hour;

/// How far a day is looked for around one of its moments. A zone that moves from the eastern to the western
/// side of the date line repeats nearly a whole day, so that one date lasts up to 48 hours.
constexpr Seconds reach = 50 * hour;
/// No zone has moved its clocks back and forth again within so short a time.
constexpr Seconds step = 10 * hour;

/// Beyond this a double cannot tell one second from the next.
constexpr double farthest = static_cast<double>(Seconds{1} << std::numeric_limits<double>::digits);

/// First and last whole second that carry one local date.
struct Day {
    Seconds first;
    Seconds last;
};

/// Seconds that local time is ahead of UTC. mktime is of no use for the way back: which of two equal local
/// times it chooses depends on the calls before.
std::optional<Seconds> localOffset(Seconds moment) {
    const time_t time = moment;
    struct tm fields;
    if (!localtime_r(&time, &fields)) return std::nullopt;
    return fields.tm_gmtoff;
}

/// The first moment after `early`, and not after `late`, at which the offset is no longer that of `early`.
/// The offset of `late` must be another one.
Seconds offsetChange(Seconds early, Seconds late) {
    const auto offset = localOffset(early);
    while (late - early > 1) {
        const Seconds middle = early + (late - early) / 2;
        (localOffset(middle) == offset ? early : late) = middle;
    }
    return late;
}

/// Local seconds at which the day of a local second starts.
Seconds startOfDay(Seconds local) {
    const Seconds remainder = local % secondsPerDay;
    return local - (remainder < 0 ? remainder + secondsPerDay : remainder);
}

std::optional<Day> localDay(Date date) {
    const double seconds = std::floor(secondsSinceEpoch(date));
    if (!(std::abs(seconds) < farthest)) return std::nullopt;
    tzset();  // localtime_r alone need not notice a change of TZ
    const auto moment = static_cast<Seconds>(seconds);
    const auto ownOffset = localOffset(moment);
    if (!ownOffset) return std::nullopt;
    const Seconds midnight = startOfDay(moment + *ownOffset);

    Day day{moment, moment};
    Seconds begin = moment - reach;
    // Adds what a stretch of one and the same offset has of the day.
    const auto endStretch = [&](Seconds end) {
        const Seconds offset = localOffset(begin).value_or(0);
        const Seconds first = std::max(begin, midnight - offset);
        const Seconds last = std::min(end, midnight + secondsPerDay - offset) - 1;
        if (first <= last) day = {std::min(day.first, first), last};
        begin = end;
    };
    for (Seconds sample = begin + step; sample <= moment + reach; sample += step) {
        while (localOffset(begin) != localOffset(sample)) endStretch(offsetChange(begin, sample));
    }
    endStretch(moment + reach);
    return day;
}

Date wholeSecond(Seconds seconds) { return dateFromSecondsSinceEpoch(static_cast<double>(seconds)); }

}  // namespace

Date orvaneDayStart(Date date) {
    const auto day = localDay(date);
    return day ? wholeSecond(day->first) : date;
}

Date orvaneDayEnd(Date date) {
    const auto day = localDay(date);
    return day ? wholeSecond(day->last) : date;
}

Date orvaneSecondStart(Date date) {
    // Offsets from UTC are whole seconds, so the local second is the absolute one.
    return dateFromSecondsSinceEpoch(std::floor(secondsSinceEpoch(date)));
}

}  // namespace orvane
