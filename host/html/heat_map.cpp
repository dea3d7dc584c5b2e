#include "host/html/heat_map.h"

#include <algorithm>
#include <numeric>

namespace orvane::host {

namespace {

using Seconds = std::chrono::duration<double>;

/// Such that a page has no more rows than one can look over.
HeatMap::Unit unitFor(int days) {
    constexpr int mostDays = 62;
    constexpr int mostInWeeks = 106 * 7;
    constexpr int mostInMonths = 366 * 30;
    return days <= mostDays       ? HeatMap::Unit::day
           : days <= mostInWeeks  ? HeatMap::Unit::week
           : days <= mostInMonths ? HeatMap::Unit::month
                                  : HeatMap::Unit::year;
}

}  // namespace

DecimalSeconds HeatMap::Row::total() const {
    return std::accumulate(hours.begin(), hours.end(), DecimalSeconds(0));
}

double HeatMap::Row::level(std::size_t hour) const {
    const double whole = 3600.0 * days;
    return std::min(std::chrono::duration<double>(hours[hour]).count() / whole, 1.0);
}

HeatMap::HeatMap(const ShownDays& days, const DateRange& range,
                 const std::vector<Ref<RangeItem>>& applications, Date now)
    : unit_(unitFor(days.count())) {
    makeRows(days, localMoment(now).day);
    const Date from = std::max(range.from, startOfDay(days.first));
    const Date to = std::min(range.to + Seconds(1), startOfDay(days.last + std::chrono::days(1)));
    for (const Ref<RangeItem>& application : applications)
        for (const Ref<OrvaneRecording>& recording : application->recordings()) {
            const auto start = recording->startDate();
            const auto end = recording->endDate();
            if (start && end) add(std::max(*start, from), std::min(*end, to));
        }
    if (unit_ == Unit::year) std::erase_if(rows_, [](const Row& row) { return row.total().count() == 0; });
}

/// Running number of the day's row, counted from some beginning.
std::int64_t HeatMap::number(CalendarDay day) const {
    const std::chrono::year_month_day civil(day);
    switch (unit_) {
        case Unit::day:
            return day.time_since_epoch().count();
        // The epoch was a Thursday: three days later every Monday is a multiple of seven.
        case Unit::week:
            return (mondayOf(day).time_since_epoch().count() + 3) / 7;
        case Unit::month:
            return static_cast<int>(civil.year()) * 12 +
                   static_cast<int>(static_cast<unsigned>(civil.month()));
        case Unit::year:
            break;
    }
    return static_cast<int>(civil.year());
}

void HeatMap::makeRows(const ShownDays& days, CalendarDay today) {
    for (CalendarDay day = days.first; day <= days.last; day += std::chrono::days(1)) {
        if (rows_.empty() || number(rows_.back().first) != number(day)) rows_.push_back({day, day, {}, 0});
        rows_.back().last = day;
        if (day <= today) ++rows_.back().days;
    }
    for (Row& row : rows_) row.days = std::max(row.days, 1);
}

void HeatMap::add(Date from, Date to) {
    const std::int64_t firstRow = number(rows_.front().first);
    while (from < to) {
        const LocalMoment moment = localMoment(from);
        const Date next = std::min(to, from + Seconds(moment.secondsToNextHour));
        const auto row = static_cast<std::size_t>(number(moment.day) - firstRow);
        rows_.at(row).hours.at(static_cast<std::size_t>(moment.hour)) +=
            decimalSeconds(Seconds(next - from).count());
        if (next <= from) break;  // too far from the epoch for a double to tell seconds apart
        from = next;
    }
}

}  // namespace orvane::host
