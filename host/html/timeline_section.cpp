#include "host/html/timeline_section.h"

#include <algorithm>

namespace orvane::host {

namespace {

using Seconds = std::chrono::duration<double>;
using Titles = std::vector<std::pair<std::string, DecimalSeconds>>;

Titles longestFirst(const TimelineBlock& block) {
    Titles titles(block.titles.begin(), block.titles.end());
    std::stable_sort(titles.begin(), titles.end(),
                     [](const auto& left, const auto& right) { return left.second > right.second; });
    return titles;
}

std::string_view titleText(std::string_view title) { return title.empty() ? "(no title)" : title; }

std::string spanOf(const TimelineBlock& block) { return timeOfDay(block.from) + " – " + timeOfDay(block.to); }

/// Writes the timeline of one day.
class DaySection {
  public:
    DaySection(Markup& page, const DayTimeline& day, const TimelineAxis& axis, bool isOnly)
        : page_(page),
          day_(day),
          from_(day.start + std::chrono::hours(axis.firstHour)),
          length_(std::chrono::hours(axis.lastHour - axis.firstHour)),
          hours_(axis.lastHour - axis.firstHour),
          identifier_("day-" + isoText(day.day)),
          heading_(isOnly ? "Timeline" : longText(day.day)) {}

    void add() {
        page_.html("<section class=day aria-labelledby=").html(identifier_).html(">\n<h2 id=");
        page_.html(identifier_).html(">").text(heading_).html("</h2>\n");
        if (day_.lanes.empty() && day_.idle.empty() && !day_.presence) {
            page_.html("<p class=none>Nothing was recorded on this day.</p>\n</section>\n");
            return;
        }
        page_.html("<div class=chart role=group").attribute("aria-label", "Timeline, " + longText(day_.day));
        page_.html(">\n");
        addBackground();
        addAxis();
        addPresence();
        for (const TimelineLane& lane : day_.lanes) addLane(lane);
        addIdle();
        page_.html("</div>\n");
        addTable();
        page_.html("</section>\n");
    }

  private:
    double place(Date date) const { return std::clamp((date - from_) / length_, 0.0, 1.0); }

    void addPlace(Date from, Date to) {
        page_.html("left:").percent(place(from)).html(";width:").percent(place(to) - place(from));
    }

    Date hourAt(int index) const { return from_ + std::chrono::hours(index); }

    /// Hour lines and idle times behind all the lanes; the lanes tell of both in words.
    void addBackground() {
        page_.html("<div class=back aria-hidden=true>");
        for (int hour = 0; hour <= hours_; ++hour)
            page_.html("<i style=\"left:").percent(place(hourAt(hour))).html("\"></i>");
        for (const TimelineBlock& block : day_.idle) {
            page_.html("<b style=\"");
            addPlace(block.from, block.to);
            page_.html("\"></b>");
        }
        page_.html("</div>\n");
    }

    void addAxis() {
        const int step = hours_ > 12 ? 2 : 1;
        page_.html("<span class=name></span><span class=time></span><div class=axis aria-hidden=true>");
        for (int hour = 0; hour <= hours_; hour += step)
            page_.html("<span style=\"left:")
                .percent(place(hourAt(hour)))
                .html("\">")
                .text(timeOfDay(hourAt(hour)).substr(0, 2))
                .html("</span>");
        page_.html("</div>\n");
    }

    void addPresence() {
        if (!day_.presence) return;
        const auto [from, to] = *day_.presence;
        addName("Presence", decimalSeconds(Seconds(to - from).count()));
        page_.html("<p class=presence><span style=\"");
        addPlace(from, to);
        page_.html(to > day_.end ? "\" class=open>" : "\">");
        page_.text(day_.presenceLabel).html("</span></p>\n");
    }

    /// Begins a row that stands for no application.
    void addName(std::string_view name, DecimalSeconds duration) {
        page_.html("<span class=\"name quiet\">").text(name).html("</span><span class=\"time quiet\">");
        page_.duration(duration, hoursText(duration)).html("</span>");
    }

    void addLane(const TimelineLane& lane) {
        page_.html("<span class=name><i class=\"swatch ").html(lane.paint.classes).html("\" style=\"");
        page_.html(lane.paint.style).html("\"></i><bdi>").text(lane.name).html("</bdi></span>");
        page_.html("<span class=time>").duration(lane.duration, hoursText(lane.duration)).html("</span>");
        page_.html("<ol class=\"lane ").html(lane.paint.classes).html("\" style=\"");
        page_.html(lane.paint.style).html("\"").attribute("aria-label", lane.name).html(">");
        for (const TimelineBlock& block : lane.blocks) addBlock(block, lane.name);
        page_.html("</ol>\n");
    }

    void addIdle() {
        if (day_.idle.empty()) return;
        DecimalSeconds sum{0};
        for (const TimelineBlock& block : day_.idle) sum += block.duration;
        addName("Idle", sum);
        page_.html("<ol class=\"lane idle\" aria-label=\"Idle\">");
        for (const TimelineBlock& block : day_.idle) addBlock(block, "");
        page_.html("</ol>\n");
    }

    /// A stretch that can be pointed at and stepped to; what it is shows then, and is always there to be
    /// read out. A stretch of idleness has no application.
    void addBlock(const TimelineBlock& block, const std::string& application) {
        constexpr std::size_t mostTitles = 4;
        page_.html("<li tabindex=0 style=\"");
        addPlace(block.from, block.to);
        // A tip hangs to the side where there is room for it.
        page_.html(place(block.from) > 0.5 ? "\" class=late><span class=tip>" : "\"><span class=tip>");
        const Titles titles = application.empty() ? Titles() : longestFirst(block);
        if (titles.empty()) page_.html("<strong>Idle</strong> ");
        for (std::size_t i = 0; i < std::min(titles.size(), mostTitles); ++i) {
            page_.html("<strong><bdi>").text(titleText(titles[i].first)).html("</bdi></strong> ");
            if (titles.size() > 1) page_.html("<em>").text(spokenText(titles[i].second)).html("</em> ");
        }
        if (titles.size() > mostTitles)
            page_.html("<em>and ")
                .text(std::to_string(titles.size() - mostTitles))
                .html(" more titles</em> ");
        page_.html("<span>");
        if (!application.empty()) page_.html("<bdi>").text(application).html("</bdi>, ");
        page_.text(spanOf(block)).html(", ").text(spokenText(block.duration)).html("</span></span></li>");
    }

    void addTable() {
        struct Row {
            const TimelineBlock* block;
            const TimelineLane* lane;  // none: idle
        };
        std::vector<Row> rows;
        for (const TimelineLane& lane : day_.lanes)
            for (const TimelineBlock& block : lane.blocks) rows.push_back({&block, &lane});
        for (const TimelineBlock& block : day_.idle) rows.push_back({&block, nullptr});
        std::stable_sort(rows.begin(), rows.end(), [](const Row& left, const Row& right) {
            return left.block->from < right.block->from;
        });
        page_.html(
            "<details><summary>The timeline as a table</summary>\n<div class=scroll><table class=list>");
        page_.html("<caption>").text(longText(day_.day)).html(", in order of time</caption>\n<thead><tr>");
        for (const char* heading : {"From", "To", "Application", "Window"})
            page_.html("<th scope=col>").html(heading).html("</th>");
        page_.html("<th scope=col class=num>Time</th></tr></thead>\n<tbody>\n");
        for (const Row& row : rows) {
            page_.html("<tr><td>").text(timeOfDay(row.block->from)).html("</td><td>");
            page_.text(timeOfDay(row.block->to)).html("</td><td>");
            if (row.lane) {
                page_.html("<bdi>").text(row.lane->name).html("</bdi></td><td>");
                addTitles(*row.block);
            } else {
                page_.html("Idle</td><td>");
            }
            page_.html("</td><td class=num>").duration(row.block->duration, hoursText(row.block->duration));
            page_.html("</td></tr>\n");
        }
        page_.html("</tbody></table></div></details>\n");
    }

    void addTitles(const TimelineBlock& block) {
        const char* separator = "";
        for (const auto& [title, duration] : longestFirst(block)) {
            page_.html(separator).html("<bdi>").text(titleText(title)).html("</bdi>");
            separator = "<br>";
        }
    }

    Markup& page_;
    const DayTimeline& day_;
    Date from_;
    Seconds length_;
    int hours_;
    std::string identifier_;
    std::string heading_;
};

}  // namespace

void addTimeline(Markup& page, const Timeline& timeline) {
    const bool isOnly = timeline.days().size() == 1;
    for (const DayTimeline& day : timeline.days()) DaySection(page, day, timeline.axis(), isOnly).add();
    page.html(
        "<p class=\"hint keys\">With the keyboard: Tab goes from application to application, the arrow keys "
        "from "
        "one stretch to the next, Escape hides what it shows.</p>\n");
}

}  // namespace orvane::host
