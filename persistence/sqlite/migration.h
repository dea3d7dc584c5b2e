#pragma once

#include "foundation/error.h"
#include "foundation/internal.h"
#include "persistence/model.h"
#include "persistence/sqlite/database.h"

namespace orvane::sqlite {

/// Brings the tables, indexes and metadata of a store from the old model to the new one and keeps the rows.
/// To be called within a transaction, which the caller commits, or rolls back when the answer is false: then
/// the error is `migrationImpossibleError` for a change that cannot be inferred or that something in the file
/// stands against, else that of the disk. What others added to the file stays.
bool migrate(Database& database, const ManagedObjectModel& oldModel, const ManagedObjectModel& newModel,
             Error* error);

}  // namespace orvane::sqlite
