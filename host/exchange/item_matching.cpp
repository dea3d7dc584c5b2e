#include "host/exchange/item_matching.h"

#include <algorithm>

#include "foundation/predicate_node.h"

namespace orvane::host {

namespace {

std::string folded(std::string_view text) { return foldedText(text, true, false); }

/// Takes the one that `agrees` out of those with the same identifier, or else the first, if identifiers are
/// enough.
template <class T, class Agrees>
Ref<T> takeBest(std::vector<Ref<T>>& candidates, bool hasIdentifier, Agrees&& agrees) {
    auto best = std::find_if(candidates.begin(), candidates.end(), agrees);
    if (best == candidates.end() && hasIdentifier) best = candidates.begin();
    if (best == candidates.end()) return nullptr;
    Ref<T> result = *best;
    candidates.erase(best);
    return result;
}

}  // namespace

ItemMatching::ItemMatching(const std::vector<Ref<OrvaneGroup>>& groups,
                           const std::vector<Ref<OrvaneApp>>& applications) {
    for (const Ref<OrvaneGroup>& group : groups)
        groups_[std::string(group->identifier().value_or(""))].push_back(group);
    for (const Ref<OrvaneApp>& application : applications) {
        const std::string identifier(application->identifier().value_or(""));
        applications_[identifier].push_back(application);
        const std::string foldedIdentifier = folded(identifier);
        const std::string foldedName = folded(application->name().value_or(""));
        byFoldedName_[foldedName].push_back(application);
        if (foldedIdentifier != foldedName) byFoldedName_[foldedIdentifier].push_back(application);
    }
}

Ref<OrvaneGroup> ItemMatching::find(const GroupItem& item) {
    return takeBest(groups_[item.identifier.value_or("")], item.identifier && !item.identifier->empty(),
                    [&](const Ref<OrvaneGroup>& group) {
                        return group->identifier() == item.identifier && group->name() == item.name &&
                               group->category() == item.category && group->color() == item.color &&
                               group->disabled() == item.disabled;
                    });
}

Ref<OrvaneApp> ItemMatching::find(const ApplicationItem& item, const Ref<OrvaneGroup>& group) {
    return takeBest(applications_[item.identifier.value_or("")], item.identifier && !item.identifier->empty(),
                    [&](const Ref<OrvaneApp>& application) {
                        return application->identifier() == item.identifier &&
                               application->name() == item.name && application->color() == item.color &&
                               application->disabled() == item.disabled && application->group() == group;
                    });
}

Ref<OrvaneApp> ItemMatching::findNamed(std::string_view name) const {
    if (const auto same = applications_.find(std::string(name));
        same != applications_.end() && !same->second.empty())
        return same->second.front();
    const auto similar = byFoldedName_.find(folded(name));
    return similar != byFoldedName_.end() && similar->second.size() == 1 ? similar->second.front() : nullptr;
}

}  // namespace orvane::host
