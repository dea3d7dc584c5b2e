#pragma once

#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include "foundation/keyed_object.h"

namespace orvane {

/// Order by the values under one key path. None comes before everything else when ascending; texts are
/// compared byte by byte, which for UTF-8 is by code point.
struct SortOrder {
    std::string keyPath;
    bool ascending = true;

    friend bool operator==(const SortOrder&, const SortOrder&) = default;
};

/// Negative, zero or positive as `left` comes before, with or after `right` when ascending. Values of
/// different classes: none, numbers, dates, texts, data, then whatever has no order.
ORVANE_EXPORT int compareForSorting(const Value& left, const Value& right);

/// Sorts objects by the orders, the first being the most significant; equal ones keep their places. Each key
/// path is read once per object. Throws UnknownKeyError.
template <class Handle>
void sortUsing(std::vector<Handle>& objects, std::span<const SortOrder> orders) {
    if (orders.empty() || objects.size() < 2) return;
    struct Row {
        std::vector<Value> keys;
        Handle object;
    };
    std::vector<Row> rows;
    rows.reserve(objects.size());
    for (const Handle& object : objects) {
        Row& row = rows.emplace_back();
        for (const SortOrder& order : orders) row.keys.push_back(object->valueForKeyPath(order.keyPath));
    }
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i].object = std::move(objects[i]);
    std::stable_sort(rows.begin(), rows.end(), [&](const Row& left, const Row& right) {
        for (std::size_t i = 0; i < orders.size(); ++i) {
            const int order = compareForSorting(left.keys[i], right.keys[i]);
            if (order != 0) return orders[i].ascending ? order < 0 : order > 0;
        }
        return false;
    });
    for (std::size_t i = 0; i < rows.size(); ++i) objects[i] = std::move(rows[i].object);
}

}  // namespace orvane
