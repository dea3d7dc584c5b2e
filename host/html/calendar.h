#pragma once

#include <chrono>
#include <string>

#include "foundation/date.h"

namespace orvane::host {

/// A day of the local calendar.
using CalendarDay = std::chrono::sys_days;

/// A date on the local calendar and clock.
struct LocalMoment {
    CalendarDay day;
    int hour = 0;
    /// Seconds until the clock shows the next full hour; more than none.
    double secondsToNextHour = 3600;
};

/// The date in the local time zone. Dates beyond the years 1 to 9999 count as the nearest within them.
LocalMoment localMoment(Date date);

/// First moment of a local day.
Date startOfDay(CalendarDay day);

/// The Monday on or before the day.
CalendarDay mondayOf(CalendarDay day);
bool isWeekend(CalendarDay day);

/// "2026-03-02"
std::string isoText(CalendarDay day);
/// "Mon 2 Mar"
std::string shortText(CalendarDay day);
/// "Monday, 2 March 2026"
std::string longText(CalendarDay day);
/// "2 – 8 March 2026": from the first to the last day, with no part said twice.
std::string spanText(CalendarDay first, CalendarDay last);
/// The same with short names: "27 Feb – 5 Mar 2026".
std::string shortSpanText(CalendarDay first, CalendarDay last);
/// "March 2026"
std::string monthText(CalendarDay day);

/// "08:30" in the local time zone.
std::string timeOfDay(Date date);
/// "2:05:09": hours, minutes and seconds, whatever the length.
std::string hoursText(DecimalSeconds duration);
/// "2 h 5 min", "28 min" or "45 s": what a person would say.
std::string spokenText(DecimalSeconds duration);

}  // namespace orvane::host
