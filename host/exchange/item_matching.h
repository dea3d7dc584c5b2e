#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/exchange/exchange_item.h"
#include "store/orvane_app.h"
#include "store/orvane_group.h"

namespace orvane::host {

/// Finds for each group and application of an input the one of the store that it is: the one with the same
/// identifier. Where several have it, one that agrees in every attribute is preferred, and each is found
/// once, so that a store with such twins takes its own export without change. One without identifier has to
/// agree in every attribute. Those of the store stay as they are.
class ItemMatching {
  public:
    ItemMatching(const std::vector<Ref<OrvaneGroup>>& groups,
                 const std::vector<Ref<OrvaneApp>>& applications);

    /// None when the store does not have it. `group` is what was found, or made, for the item's group.
    Ref<OrvaneGroup> find(const GroupItem& item);
    Ref<OrvaneApp> find(const ApplicationItem& item, const Ref<OrvaneGroup>& group);
    /// The same by the name alone: the application with this identifier, or else the only one with that name
    /// or identifier, case aside. The same may be found again.
    Ref<OrvaneApp> findNamed(std::string_view name) const;

  private:
    // By identifier; an absent one counts as empty here.
    std::unordered_map<std::string, std::vector<Ref<OrvaneGroup>>> groups_;
    std::unordered_map<std::string, std::vector<Ref<OrvaneApp>>> applications_;
    std::unordered_map<std::string, std::vector<Ref<OrvaneApp>>> byFoldedName_;
};

}  // namespace orvane::host
