#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::host {

/// What people may call a group or an application by.
struct ItemName {
    std::string identifier;
    std::string name;
};

/// Indexes of the items that a word means, or why it means none.
struct ItemLookup {
    std::vector<std::size_t> found;
    std::string problem;
};

/// Looks for the item with that identifier, or else with that name, or else with either when case is put
/// aside. Several items with one identifier are found together. Where items with different identifiers would
/// do, or none does, the problem tells which there are, or which is nearest. `kind` completes "no …".
ItemLookup lookUp(std::string_view word, const std::vector<ItemName>& items, std::string_view kind);

}  // namespace orvane::host
