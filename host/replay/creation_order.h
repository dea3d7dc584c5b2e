#pragma once

#include "persistence/managed_object.h"

namespace orvane::host {

/// Whether the left object of one entity is older. Keys grow from object to object; those of objects that
/// were never saved are negative and shrink, and such objects are younger than all saved ones.
template <class T>
bool wasCreatedBefore(const Ref<T>& left, const Ref<T>& right) {
    const std::int64_t leftKey = left->objectID().key();
    const std::int64_t rightKey = right->objectID().key();
    if ((leftKey < 0) != (rightKey < 0)) return rightKey < 0;
    return leftKey < 0 ? leftKey > rightKey : leftKey < rightKey;
}

}  // namespace orvane::host
