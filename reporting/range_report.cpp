#include <algorithm>
#include <unordered_map>

#include "reporting/orvane_group_for_range.h"
#include "tracker/orvane.h"

namespace orvane {

namespace {

/// An item with its duration, which is computed once for sorting.
template <class Item>
struct Measured {
    Ref<Item> item;
    DecimalSeconds duration{0};
};

template <class Item>
std::vector<Ref<Item>> longestFirst(std::vector<Measured<Item>> items) {
    std::stable_sort(items.begin(), items.end(),
                     [](const auto& left, const auto& right) { return left.duration > right.duration; });
    std::vector<Ref<Item>> result;
    result.reserve(items.size());
    for (Measured<Item>& measured : items) result.push_back(std::move(measured.item));
    return result;
}

struct UsedApplication {
    Ref<OrvaneApp> app;
    std::vector<Ref<OrvaneRecording>> recordings;
    DecimalSeconds duration{0};
};

/// The recordings by application, in one pass; those without an application are nobody's.
std::vector<UsedApplication> byApplication(std::vector<Ref<OrvaneRecording>> recordings) {
    std::vector<UsedApplication> used;
    std::unordered_map<const OrvaneApp*, std::size_t> places;
    for (Ref<OrvaneRecording>& recording : recordings) {
        Ref<OrvaneApp> app = recording->application();
        if (!app) continue;
        const auto [place, isNew] = places.try_emplace(app.get(), used.size());
        if (isNew) used.push_back({std::move(app), {}, {}});
        UsedApplication& owner = used[place->second];
        owner.duration += recording->duration();
        owner.recordings.push_back(std::move(recording));
    }
    return used;
}

Ref<OrvaneGroupForRange> groupView(const Ref<OrvaneGroup>& group, Date fromDate, Date toDate) {
    auto view = makeRef<OrvaneGroupForRange>();
    view->setFromDate(fromDate);
    view->setToDate(toDate);
    view->setGroup(group);
    return view;
}

}  // namespace

std::vector<Ref<RangeItem>> Orvane::itemsFromDate(Date fromDate, Date toDate) {
    ManagedObjectContext* context = managedObjectContext();
    return context ? itemsFromDate(fromDate, toDate, *context) : std::vector<Ref<RangeItem>>();
}

std::vector<Ref<RangeItem>> Orvane::itemsFromDate(Date fromDate, Date toDate,
                                                  ManagedObjectContext& context) const {
    const ReadScope scope(context);
    const auto groups = context.fetch<OrvaneGroup>({std::string(OrvaneGroup::entityName())});
    auto recordings = context.fetch<OrvaneRecording>(
        {.entityName = std::string(OrvaneRecording::entityName()),
         .predicate = Predicate::withFormat("startDate >= %@ AND startDate <= %@ AND idle == 0",
                                            {Value(fromDate), Value(toDate)}),
         .textsWhenRead = true});

    std::vector<Measured<RangeItem>> items;
    std::vector<std::pair<Ref<OrvaneGroup>, std::vector<Measured<OrvaneAppForRange>>>> usedGroups;
    std::unordered_map<const OrvaneGroup*, std::size_t> places;
    for (UsedApplication& used : byApplication(std::move(recordings))) {
        auto view = makeRef<OrvaneAppForRange>();
        view->setApp(used.app);
        view->setRecordings(std::move(used.recordings));
        view->setFromDate(fromDate);
        view->setToDate(toDate);
        const Ref<OrvaneGroup> group = used.app->group();
        if (!group) {
            items.push_back({view, used.duration});
            continue;
        }
        const auto [place, isNew] = places.try_emplace(group.get(), usedGroups.size());
        if (isNew) usedGroups.emplace_back(group, std::vector<Measured<OrvaneAppForRange>>());
        usedGroups[place->second].second.push_back({view, used.duration});
    }
    for (auto& [group, apps] : usedGroups) {
        DecimalSeconds duration{0};
        for (const auto& app : apps) duration += app.duration;
        const Ref<OrvaneGroupForRange> view = groupView(group, fromDate, toDate);
        view->setAppsForRange(longestFirst(std::move(apps)));
        items.push_back({view, duration});
    }
    for (const Ref<OrvaneGroup>& group : groups)
        if (!places.contains(group.get()))
            items.push_back({groupView(group, fromDate, toDate), DecimalSeconds(0)});
    return longestFirst(std::move(items));
}

}  // namespace orvane
