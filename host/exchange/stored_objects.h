#pragma once

#include <algorithm>
#include <optional>
#include <vector>

#include "foundation/error.h"
#include "persistence/managed_object_context.h"
#include "persistence/persistence_errors.h"
#include "store/orvane_recording.h"

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

/// Calls `use` with each recording that the request finds, one at a time: never are they all in memory. Ends
/// early when `use` returns false. False, with an error, when the store cannot be read.
template <class Use>
bool forEachRecording(ManagedObjectContext& context, const FetchRequest& request, Error* error, Use&& use) {
    const auto identifiers = context.identifiersForFetchRequest(request, error);
    if (!identifiers) return false;
    for (const ManagedObjectID& identifier : *identifiers) {
        Error failure;
        const Ref<ManagedObject> object = context.existingObjectWithID(identifier, &failure);
        if (!object) {
            // Deleted by another program meanwhile.
            if (failure.domain() == persistenceErrorDomain && failure.code() == objectNotFoundError) continue;
            assignError(error, failure);
            return false;
        }
        if (!use(static_cast<const OrvaneRecording&>(*object), identifiers->size())) break;
    }
    return true;
}

/// Saves; for up to a second it tries again while another program is writing.
bool saveSoon(ManagedObjectContext& context, Error* error);

}  // namespace orvane::host
