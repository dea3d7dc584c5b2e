#include "host/html/timeline.h"

#include <algorithm>
#include <cmath>

#include "reporting/orvane_presence.h"

namespace orvane::host {

namespace {

using Seconds = std::chrono::duration<double>;

/// What a timeline cannot show apart: about a pixel and a half of a day's eight to twelve hours.
constexpr Seconds finest{60};

/// The part of a recording that lies within a day.
struct Piece {
    Date from;
    Date to;
    std::string title;
};

std::vector<Piece> piecesWithin(const std::vector<Ref<OrvaneRecording>>& recordings, Date from, Date to) {
    std::vector<Piece> pieces;
    for (const Ref<OrvaneRecording>& recording : recordings) {
        const auto start = recording->startDate();
        const auto end = recording->endDate();
        if (!start || !end) continue;
        Piece piece{std::max(*start, from), std::min(*end, to), {}};
        if (piece.to <= piece.from) continue;
        piece.title = recording->windowName().value_or("");
        pieces.push_back(std::move(piece));
    }
    std::sort(pieces.begin(), pieces.end(), [](const Piece& left, const Piece& right) {
        return std::tie(left.from, left.to, left.title) < std::tie(right.from, right.to, right.title);
    });
    return pieces;
}

bool joins(const TimelineBlock& block, const Piece& piece) {
    if (piece.from - block.to > finest / 2) return false;
    const auto longest =
        std::max_element(block.titles.begin(), block.titles.end(),
                         [](const auto& left, const auto& right) { return left.second < right.second; });
    return longest->first == piece.title || block.to - block.from < finest || piece.to - piece.from < finest;
}

std::vector<TimelineBlock> blocksOf(const std::vector<Piece>& pieces) {
    std::vector<TimelineBlock> blocks;
    for (const Piece& piece : pieces) {
        if (blocks.empty() || !joins(blocks.back(), piece)) {
            blocks.emplace_back();
            blocks.back().from = piece.from;
            blocks.back().to = piece.to;
        }
        TimelineBlock& block = blocks.back();
        const DecimalSeconds duration = decimalSeconds(Seconds(piece.to - piece.from).count());
        block.to = std::max(block.to, piece.to);
        block.duration += duration;
        block.titles[piece.title] += duration;
    }
    return blocks;
}

std::vector<Ref<OrvaneRecording>> idleRecordings(const DateRange& range, ManagedObjectContext& context) {
    return context.fetch<OrvaneRecording>(
        {std::string(OrvaneRecording::entityName()),
         Predicate::withFormat("startDate >= %@ AND startDate <= %@ AND idle == TRUE",
                               {Value(range.from), Value(range.to)})});
}

}  // namespace

Timeline::Timeline(const ShownDays& days, const DateRange& range,
                   const std::vector<Ref<RangeItem>>& applications, ManagedObjectContext& context) {
    const std::vector<Ref<OrvaneRecording>> idle = idleRecordings(range, context);
    for (CalendarDay day = days.first; day <= days.last; day += std::chrono::days(1)) {
        DayTimeline shown;
        shown.day = day;
        shown.start = startOfDay(day);
        shown.end = startOfDay(day + std::chrono::days(1));
        addLanes(shown, range, applications);
        const Date last = std::min(shown.end, range.to + Seconds(1));
        shown.idle = blocksOf(piecesWithin(idle, std::max(shown.start, range.from), last));
        const Ref<OrvanePresence> presence = OrvanePresence::presenceForDate(shown.start);
        if (presence->startDate() && presence->endDate()) {
            shown.presence = DateRange{*presence->startDate(), *presence->endDate()};
            shown.presenceLabel = presence->label();
        }
        days_.push_back(std::move(shown));
    }
    chooseAxis();
}

void Timeline::addLanes(DayTimeline& day, const DateRange& range,
                        const std::vector<Ref<RangeItem>>& applications) const {
    for (const Ref<RangeItem>& application : applications) {
        TimelineLane lane{shownName(*application), paintOf(*application), {}, {}};
        // The last second of the range is part of it.
        lane.blocks = blocksOf(piecesWithin(application->recordings(), std::max(day.start, range.from),
                                            std::min(day.end, range.to + Seconds(1))));
        for (const TimelineBlock& block : lane.blocks) lane.duration += block.duration;
        if (!lane.blocks.empty()) day.lanes.push_back(std::move(lane));
    }
    std::stable_sort(day.lanes.begin(), day.lanes.end(),
                     [](const auto& left, const auto& right) { return left.duration > right.duration; });
}

void Timeline::chooseAxis() {
    constexpr int fewest = 4;
    constexpr Seconds hour{3600};
    std::optional<TimelineAxis> used;
    int longestDay = 24;
    for (const DayTimeline& day : days_) {
        longestDay = std::max(longestDay, static_cast<int>(std::ceil((day.end - day.start) / hour)));
        const auto include = [&](Date from, Date to) {
            const auto first = static_cast<int>(std::floor(std::max(from - day.start, Seconds(0)) / hour));
            const auto last =
                static_cast<int>(std::ceil(std::min(to - day.start, day.end - day.start) / hour));
            if (!used) used = TimelineAxis{first, last};
            used->firstHour = std::min(used->firstHour, first);
            used->lastHour = std::max(used->lastHour, last);
        };
        for (const TimelineLane& lane : day.lanes) include(lane.blocks.front().from, lane.blocks.back().to);
        if (day.presence) include(day.presence->from, day.presence->to);
    }
    if (!used) return;
    used->lastHour = std::min(std::max(used->lastHour, used->firstHour + fewest), longestDay);
    used->firstHour = std::max(0, std::min(used->firstHour, used->lastHour - fewest));
    axis_ = *used;
}

}  // namespace orvane::host
