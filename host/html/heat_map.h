#pragma once

#include <array>
#include <vector>

#include "host/date_range.h"
#include "host/html/shown_days.h"

namespace orvane::host {

/// Time in use by hour of the day, in rows of one or more days.
class HeatMap {
  public:
    enum class Unit { day, week, month, year };

    struct Row {
        /// Its days, of those that are shown.
        CalendarDay first;
        CalendarDay last;
        std::array<DecimalSeconds, 24> hours{};
        /// Days of it up to today; at least one.
        int days = 1;

        DecimalSeconds total() const;
        /// What part of the hour was in use on an average day: from 0 to 1.
        double level(std::size_t hour) const;
    };

    /// `now` tells which days are yet to come.
    HeatMap(const ShownDays& days, const DateRange& range, const std::vector<Ref<RangeItem>>& applications,
            Date now);

    Unit unit() const { return unit_; }
    /// Every row of the days that are shown; of years only those with use.
    const std::vector<Row>& rows() const { return rows_; }

  private:
    std::int64_t number(CalendarDay day) const;
    void makeRows(const ShownDays& days, CalendarDay today);
    void add(Date from, Date to);

    Unit unit_;
    std::vector<Row> rows_;
};

}  // namespace orvane::host
