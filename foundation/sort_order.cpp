#include "foundation/sort_order.h"

namespace orvane {

namespace {

int classRank(const Value& value) {
    if (value.isNone()) return 0;
    if (value.isNumber()) return 1;
    if (value.asDate()) return 2;
    if (value.asString()) return 3;
    return value.asData() ? 4 : 5;
}

}  // namespace

int compareForSorting(const Value& left, const Value& right) {
    if (const auto order = left.compare(right)) return *order;
    return classRank(left) - classRank(right);
}

}  // namespace orvane
