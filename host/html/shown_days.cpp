#include "host/html/shown_days.h"

#include <algorithm>

#include "reporting/orvane_app_for_range.h"

namespace orvane::host {

std::vector<Ref<RangeItem>> applicationsOf(const std::vector<Ref<RangeItem>>& items) {
    std::vector<Ref<RangeItem>> applications;
    for (const Ref<RangeItem>& item : items) {
        if (!item->isGroup()) applications.push_back(item);
        for (const Ref<OrvaneAppForRange>& app : item->appsForRange()) applications.emplace_back(app);
    }
    return applications;
}

std::optional<ShownDays> shownDays(const DateRange& range, const std::vector<Ref<RangeItem>>& applications) {
    constexpr int mostAsAsked = 62;
    const ShownDays asked{localMoment(range.from).day, localMoment(range.to).day};
    if (asked.count() <= mostAsAsked) return asked;
    std::optional<DateRange> used;
    for (const Ref<RangeItem>& application : applications)
        for (const Ref<OrvaneRecording>& recording : application->recordings()) {
            const auto start = recording->startDate();
            const auto end = recording->endDate();
            if (!start || !end) continue;
            if (!used) used = DateRange{*start, *start};
            used->from = std::min(used->from, *start);
            used->to = std::max(used->to, std::min(*end, range.to));
        }
    if (!used) return std::nullopt;
    return ShownDays{localMoment(used->from).day, localMoment(used->to).day};
}

}  // namespace orvane::host
