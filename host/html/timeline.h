#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/date_range.h"
#include "host/html/item_paint.h"
#include "host/html/shown_days.h"
#include "persistence/managed_object_context.h"

namespace orvane::host {

/// A stretch of one application, or of idleness. Recordings that follow closely on one another share one
/// when they have the title that prevails in it, or are too short to be seen each for itself.
struct TimelineBlock {
    Date from;
    Date to;
    /// Time that was recorded between the two.
    DecimalSeconds duration{0};
    /// How long each title was shown.
    std::map<std::string, DecimalSeconds> titles;
};

/// One application's stretches of a day, in order of their start.
struct TimelineLane {
    std::string name;
    ItemPaint paint;
    DecimalSeconds duration{0};
    std::vector<TimelineBlock> blocks;
};

struct DayTimeline {
    CalendarDay day;
    Date start;  ///< first moment of the day
    Date end;    ///< first moment of the next
    std::vector<TimelineLane> lanes;
    std::vector<TimelineBlock> idle;
    /// Of the whole day, whatever the range; none for a day without use. The end may lie in the next day.
    std::optional<DateRange> presence;
    std::string presenceLabel;
};

/// The part of every day that the timelines show, in hours since its start: the same for all of them.
struct TimelineAxis {
    int firstHour = 0;
    int lastHour = 24;
};

/// What happened on each of a few days.
class Timeline {
  public:
    /// Reads idle times and presences from the store behind the context, through the shared tracker.
    Timeline(const ShownDays& days, const DateRange& range, const std::vector<Ref<RangeItem>>& applications,
             ManagedObjectContext& context);

    const std::vector<DayTimeline>& days() const { return days_; }
    const TimelineAxis& axis() const { return axis_; }

  private:
    void addLanes(DayTimeline& day, const DateRange& range,
                  const std::vector<Ref<RangeItem>>& applications) const;
    void chooseAxis();

    std::vector<DayTimeline> days_;
    TimelineAxis axis_;
};

}  // namespace orvane::host
