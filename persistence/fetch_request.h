#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/predicate.h"
#include "foundation/sort_order.h"

namespace orvane {

/// Which objects to fetch. Without sort orders their order is not specified.
struct ORVANE_EXPORT FetchRequest {
    std::string entityName;
    std::optional<Predicate> predicate = std::nullopt;
    std::vector<SortOrder> sortOrders = {};
    std::size_t fetchLimit = 0;   ///< 0: no limit
    std::size_t fetchOffset = 0;  ///< objects passed over at the beginning, counted after sorting
    /// Leaves texts and data in the file until one of them is read; those of neighbouring objects then come
    /// along. For answers of which few texts are wanted.
    bool textsWhenRead = false;

    /// Entity and settings as text, for logs.
    std::string description() const;
};

}  // namespace orvane
