#pragma once

#include "foundation/error.h"
#include "foundation/internal.h"
#include "persistence/persistent_store_coordinator.h"

namespace orvane {

/// Options under which a store is opened to delete from it beyond recall: zeros go over what is deleted, the
/// journal is not taken away with what it holds, and from the first write on nobody else gets at the file.
PersistentStoreOptions erasingStoreOptions();

/// Brings the deletions that were saved beyond recall: writes the file anew, so that no page keeps an old
/// copy of a row, and zeros over the journal before it is removed. Call it last on a store with the options
/// above. False, with an error, when not everything could be overwritten; what was saved stays saved.
bool eraseRemains(PersistentStoreCoordinator& coordinator, Error* error);

}  // namespace orvane
