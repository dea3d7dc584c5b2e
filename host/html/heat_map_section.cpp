#include "host/html/heat_map_section.h"

#include <cmath>
#include <cstdio>

namespace orvane::host {

namespace {

constexpr int levels = 6;  // the style sheet has classes h1 to h6

struct Wording {
    const char* heading;
    const char* row;
    const char* caption;
};

Wording wordingFor(HeatMap::Unit unit) {
    switch (unit) {
        case HeatMap::Unit::day:
            return {"Hours of each day", "Day", "Minutes in use in each hour"};
        case HeatMap::Unit::week:
            return {"Hours of each week", "Week",
                    "Minutes in use in each hour, on an average day of the week"};
        case HeatMap::Unit::month:
            return {"Hours of each month", "Month",
                    "Minutes in use in each hour, on an average day of the month"};
        case HeatMap::Unit::year:
            break;
    }
    return {"Hours of each year", "Year", "Minutes in use in each hour, on an average day of the year"};
}

std::string nameOf(const HeatMap::Row& row, HeatMap::Unit unit) {
    switch (unit) {
        case HeatMap::Unit::day:
            return shortText(row.first);
        case HeatMap::Unit::week:
            return shortSpanText(row.first, row.last);
        case HeatMap::Unit::month:
            return monthText(row.first);
        case HeatMap::Unit::year:
            break;
    }
    return isoText(row.first).substr(0, 4);
}

void addRow(Markup& page, const HeatMap::Row& row, HeatMap::Unit unit) {
    page.html("<tr tabindex=0");
    const bool isDay = unit == HeatMap::Unit::day;
    if (isDay && isWeekend(row.first)) page.html(" class=weekend");
    if (isDay && mondayOf(row.first) == row.first) page.html(" class=monday");
    page.html("><th scope=row>").text(nameOf(row, unit)).html("</th>");
    for (std::size_t hour = 0; hour < row.hours.size(); ++hour) {
        const double level = row.level(hour);
        if (row.hours[hour].count() == 0 || level <= 0) {
            page.html("<td></td>");
            continue;
        }
        const int step = std::max(1, static_cast<int>(std::ceil(level * levels)));
        const long minutes = std::lround(level * 60);
        page.html("<td class=h").html(std::to_string(step)).html(">");
        page.duration(row.hours[hour], minutes == 0 ? "<1" : std::to_string(minutes)).html("</td>");
    }
    page.html("<td class=num>");
    if (row.total().count() != 0) page.duration(row.total(), hoursText(row.total()));
    page.html("</td></tr>\n");
}

}  // namespace

void addHeatMap(Markup& page, const HeatMap& heatMap) {
    const Wording wording = wordingFor(heatMap.unit());
    page.html("<section aria-labelledby=hours>\n<h2 id=hours>").html(wording.heading).html("</h2>\n");
    page.html("<div class=scroll><table class=heat>\n<caption>").html(wording.caption).html("</caption>\n");
    page.html("<thead><tr><th scope=col>").html(wording.row).html("</th>");
    for (int hour = 0; hour < 24; ++hour) {
        char text[16];
        std::snprintf(text, sizeof text, "%02d", hour);
        page.html("<th scope=col>").html(text).html("</th>");
    }
    page.html("<th scope=col class=num>Total</th></tr></thead>\n<tbody>\n");
    for (const HeatMap::Row& row : heatMap.rows()) addRow(page, row, heatMap.unit());
    page.html("</tbody></table></div>\n<p class=legend aria-hidden=true>0 <i></i>");
    for (int step = 1; step <= levels; ++step)
        page.html("<i class=h").html(std::to_string(step)).html("></i>");
    page.html(
        " 60 minutes</p>\n<p class=hint>Point at a row, or step to it with the keyboard, to read its "
        "minutes.</p>\n</section>\n");
}

}  // namespace orvane::host
