#include "host/html/totals_section.h"

#include <algorithm>
#include <cmath>

#include "host/html/calendar.h"
#include "host/html/item_paint.h"
#include "host/html/shown_days.h"
#include "host/window_use.h"
#include "reporting/orvane_app_for_range.h"

namespace orvane::host {

namespace {

double portion(DecimalSeconds part, DecimalSeconds whole) {
    return part.count() > 0 && whole.count() > 0
               ? static_cast<double>(part.count()) / static_cast<double>(whole.count())
               : 0;
}

std::string shareText(DecimalSeconds part, DecimalSeconds whole) {
    const double share = portion(part, whole) * 100;
    return share > 0 && share < 0.5 ? "<1 %" : std::to_string(std::lround(share)) + " %";
}

/// Writes the rows of the table of totals.
class TotalsTable {
  public:
    TotalsTable(Markup& page, const std::vector<Ref<RangeItem>>& items) : page_(page) {
        for (const Ref<RangeItem>& item : items) {
            total_ += item->duration();
            longest_ = std::max(longest_, item->duration());
        }
    }

    void add(const RangeItem& item, const char* kind) {
        const ItemPaint paint = paintOf(item);
        const DecimalSeconds duration = item.duration();
        page_.html("<tr class=").html(kind).html("><th scope=row><i class=\"swatch ").html(paint.classes);
        page_.html("\" style=\"").html(paint.style).html("\"></i><bdi>").text(shownName(item));
        page_.html("</bdi></th><td class=bar aria-hidden=true><i class=\"").html(paint.classes);
        page_.html("\" style=\"").html(paint.style).html(";width:");
        page_.percent(portion(duration, longest_)).html("\"></i></td><td class=num>");
        page_.duration(duration, hoursText(duration)).html("</td><td class=num>");
        page_.text(shareText(duration, total_)).html("</td></tr>\n");
    }

    void addTotal() {
        page_.html("<tr><th scope=row>Total</th><td></td><td class=num>").duration(total_, hoursText(total_));
        page_.html("</td><td></td></tr>\n");
    }

  private:
    Markup& page_;
    DecimalSeconds total_{0};
    DecimalSeconds longest_{0};
};

bool isUnused(const RangeItem& item) { return item.isGroup() && item.appsForRange().empty(); }

void addUnusedGroups(Markup& page, const std::vector<Ref<RangeItem>>& items) {
    const char* separator = "<p class=hint>Groups without use: ";
    for (const Ref<RangeItem>& item : items) {
        if (!isUnused(*item)) continue;
        page.html(separator).html("<bdi>").text(shownName(*item)).html("</bdi>");
        separator = ", ";
    }
    if (std::any_of(items.begin(), items.end(), [](const auto& item) { return isUnused(*item); }))
        page.html(".</p>\n");
}

void addTitles(Markup& page, const RangeItem& application) {
    constexpr std::size_t mostTitles = 200;
    const std::vector<WindowUse> windows = windowsOf(application);
    const std::string name = shownName(application);
    const ItemPaint paint = paintOf(application);
    page.html("<details><summary><i class=\"swatch ").html(paint.classes).html("\" style=\"");
    page.html(paint.style).html("\"></i> <bdi>").text(name).html("</bdi> ");
    const DecimalSeconds whole = application.duration();
    page.duration(whole, hoursText(whole));
    page.html("</summary>\n<table class=list><caption>");
    page.html("Windows of <bdi>").text(name).html("</bdi></caption>\n<thead><tr><th scope=col>Window</th>");
    page.html("<th scope=col class=num>Time</th><th scope=col class=num>Share</th></tr></thead>\n<tbody>\n");
    const auto addRow = [&](DecimalSeconds duration) {
        page.html("</td><td class=num>").duration(duration, hoursText(duration)).html("</td><td class=num>");
        page.text(shareText(duration, whole)).html("</td></tr>\n");
    };
    const std::size_t shown = std::min(windows.size(), mostTitles);
    for (std::size_t i = 0; i < shown; ++i) {
        page.html("<tr><td><bdi>").text(windows[i].title.empty() ? "(no title)" : windows[i].title);
        page.html("</bdi>");
        addRow(windows[i].duration);
    }
    DecimalSeconds rest{0};
    for (std::size_t i = shown; i < windows.size(); ++i) rest += windows[i].duration;
    if (shown < windows.size()) {
        page.html("<tr class=quiet><td>").text(std::to_string(windows.size() - shown)).html(" more titles");
        addRow(rest);
    }
    page.html("</tbody></table></details>\n");
}

}  // namespace

void addTotals(Markup& page, const std::vector<Ref<RangeItem>>& items) {
    page.html(
        "<section aria-labelledby=totals>\n<h2 id=totals>Groups and applications</h2>\n<div class=scroll>");
    page.html(
        "<table class=totals>\n<caption>Time by group and application, longest first</caption>\n<thead>");
    page.html("<tr><th scope=col>Name</th><td></td><th scope=col class=num>Time</th>");
    page.html("<th scope=col class=num>Share</th></tr></thead>\n<tbody>\n");
    TotalsTable table(page, items);
    for (const Ref<RangeItem>& item : items) {
        if (isUnused(*item)) continue;
        table.add(*item, item->isGroup() ? "group" : "app");
        for (const Ref<OrvaneAppForRange>& app : item->appsForRange()) table.add(*app, "member");
    }
    page.html("</tbody>\n<tfoot>\n");
    table.addTotal();
    page.html("</tfoot></table></div>\n");
    addUnusedGroups(page, items);
    page.html("</section>\n");
}

void addWindows(Markup& page, const std::vector<Ref<RangeItem>>& items) {
    page.html("<section class=windows aria-labelledby=windows>\n<h2 id=windows>Windows</h2>\n");
    for (const Ref<RangeItem>& application : applicationsOf(items)) addTitles(page, *application);
    page.html("</section>\n");
}

}  // namespace orvane::host
