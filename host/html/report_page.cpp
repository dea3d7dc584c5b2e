#include "host/html/report_page.h"

#include <algorithm>

#include "host/html/heat_map_section.h"
#include "host/html/page_frame.h"
#include "host/html/timeline_section.h"
#include "host/html/totals_section.h"
#include "host/terminal.h"
#include "util/day_boundaries.h"

namespace orvane::host {

namespace {

constexpr int mostDaysOfTimeline = 3;

std::string titleFor(const std::optional<ShownDays>& days) {
    return days ? spanText(days->first, days->last) : "No recordings";
}

/// The bounds, when they are not those of whole days.
std::string subtitleFor(const DateRange& range) {
    if (range.from == orvaneDayStart(range.from) && range.to >= orvaneDayEnd(range.to)) return {};
    return "From " + localText(range.from) + " to " + localText(range.to);
}

std::string longestApplication(const std::vector<Ref<RangeItem>>& applications) {
    const auto longest = std::max_element(
        applications.begin(), applications.end(),
        [](const auto& left, const auto& right) { return left->duration() < right->duration(); });
    return shownName(**longest);
}

std::string daysInUse(const HeatMap& heatMap) {
    const auto used = std::count_if(heatMap.rows().begin(), heatMap.rows().end(),
                                    [](const HeatMap::Row& row) { return row.total().count() > 0; });
    return std::to_string(used) + " of " + std::to_string(heatMap.rows().size());
}

}  // namespace

std::string reportPage(const ReportPageContent& content) {
    const std::vector<Ref<RangeItem>> applications = applicationsOf(content.items);
    const std::optional<ShownDays> days = shownDays(content.range, applications);
    PageHeading heading{titleFor(days), subtitleFor(content.range), {}};
    Markup sections;
    DecimalSeconds total{0};
    for (const Ref<RangeItem>& item : content.items) total += item->duration();
    if (!applications.empty())
        heading.facts = {{"Recorded", spokenText(total)}, {"Most used", longestApplication(applications)}};
    if (days && content.context && days->count() <= mostDaysOfTimeline) {
        const Timeline timeline(*days, content.range, applications, *content.context);
        if (timeline.days().size() == 1 && timeline.days().front().presence)
            heading.facts.insert(heading.facts.begin(), {"Presence", timeline.days().front().presenceLabel});
        addTimeline(sections, timeline);
    } else if (days && !applications.empty()) {
        const HeatMap heatMap(*days, content.range, applications, content.now);
        if (heatMap.unit() == HeatMap::Unit::day)
            heading.facts.emplace_back("Days in use", daysInUse(heatMap));
        addHeatMap(sections, heatMap);
    } else {
        sections.html("<p class=none>Nothing was recorded in this range.</p>\n");
    }
    if (!applications.empty()) addTotals(sections, content.items);
    if (content.windows && !applications.empty()) addWindows(sections, content.items);
    return framedPage(heading, sections, "Made by Orvane on " + localText(content.now) + ".");
}

}  // namespace orvane::host
