#include "host/exchange/stored_objects.h"

#include "persistence/persistence_errors.h"

namespace orvane::host {

bool saveSoon(ManagedObjectContext& context, Error* error) {
    // Each attempt waits for the lock itself, for as long as the store is told to.
    constexpr int mostAttempts = 20;
    for (int attempt = 1;; ++attempt) {
        Error failure;
        if (context.save(&failure)) return true;
        const bool locked = failure.domain() == persistenceErrorDomain && failure.code() == storeLockedError;
        if (locked && attempt < mostAttempts) continue;
        assignError(error, failure);
        return false;
    }
}

}  // namespace orvane::host
