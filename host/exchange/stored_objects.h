#pragma once

#include <algorithm>
#include <optional>
#include <vector>

#include "foundation/error.h"
#include "persistence/managed_object_context.h"

namespace orvane::host {

/// Every stored object of a kind, in the order in which they came into the store. None, with an error, when
/// the store cannot be read.
template <class T>
std::optional<std::vector<Ref<T>>> storedObjects(ManagedObjectContext& context, Error* error) {
    Error failure;
    auto result =
        context.fetch<T>({std::string(T::entityName()), Predicate::withFormat("TRUEPREDICATE")}, &failure);
    if (failure) {
        assignError(error, failure);
        return std::nullopt;
    }
    std::sort(result.begin(), result.end(), [](const Ref<T>& left, const Ref<T>& right) {
        return left->objectID().key() < right->objectID().key();
    });
    return result;
}

/// Saves; for up to a second it tries again while another program is writing.
bool saveSoon(ManagedObjectContext& context, Error* error);

}  // namespace orvane::host
