#include "host/item_lookup.h"

#include <algorithm>

#include "foundation/predicate_node.h"
#include "host/nearest.h"

namespace orvane::host {

namespace {

std::string folded(std::string_view text) { return foldedText(text, true, false); }

template <class Matches>
std::vector<std::size_t> indexesWhere(const std::vector<ItemName>& items, Matches&& matches) {
    std::vector<std::size_t> result;
    for (std::size_t i = 0; i < items.size(); ++i)
        if (matches(items[i])) result.push_back(i);
    return result;
}

std::string candidates(const std::vector<ItemName>& items, const std::vector<std::size_t>& indexes) {
    std::string result;
    for (const std::size_t index : indexes)
        result += (result.empty() ? "" : ", ") + items[index].identifier + " (" + items[index].name + ")";
    return result;
}

}  // namespace

ItemLookup lookUp(std::string_view word, const std::vector<ItemName>& items, std::string_view kind) {
    auto found = indexesWhere(items, [&](const ItemName& item) { return item.identifier == word; });
    if (!found.empty()) return {std::move(found), {}};
    found = indexesWhere(items, [&](const ItemName& item) { return item.name == word; });
    if (found.empty())
        found = indexesWhere(items, [&](const ItemName& item) {
            return folded(item.identifier) == folded(word) || folded(item.name) == folded(word);
        });
    if (found.empty()) {
        std::vector<std::string> known;
        for (const ItemName& item : items) {
            known.push_back(item.name);
            known.push_back(item.identifier);
        }
        return {{},
                "there is no " + std::string(kind) + " \"" + std::string(word) + "\"." +
                    nearestHint(word, known)};
    }
    const bool differ = std::any_of(found.begin(), found.end(), [&](std::size_t index) {
        return items[index].identifier != items[found.front()].identifier;
    });
    if (!differ) return {std::move(found), {}};
    return {{},
            "\"" + std::string(word) + "\" may be any of " + candidates(items, found) +
                ". Name the one you mean by its identifier."};
}

}  // namespace orvane::host
