#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/internal.h"
#include "persistence/model.h"
#include "persistence/sqlite/database.h"

namespace orvane::sqlite {

// The schema of a store, one strict table an entity:
//   "Recording"("_id" INTEGER PRIMARY KEY, "startDate" REAL, "idle" INTEGER, "windowName" TEXT, …,
//   "application" INTEGER)
// A to-one relationship is a column of its own name with the key of the other row; a to-many one has no
// column, its inverse carries it. Booleans, integers and decimals (microseconds) are INTEGER, dates (seconds
// since the epoch) and reals REAL, data BLOB. Indexes are named "Entity:first,second". An interval (start,
// end) has the partial index "Entity:start>end" on (start) WHERE end < start.
//   "_keys"("entity" TEXT PRIMARY KEY, "last" INTEGER): the last key given out, so that none is given out
//   twice.
//   "_metadata"("name" TEXT PRIMARY KEY, "value"): "store" (UUID of the store), "model" (text of the model),
// "schema" (SQLite's number of the schema as the library left it: while it is the same, nobody changed a
// table). `application_id` is 0x4F72766E ("Orvn"), `user_version` the number of this layout, 1.

inline constexpr std::int64_t applicationId = 0x4F72766E;
inline constexpr std::int64_t layoutVersion = 1;

std::string quoted(std::string_view identifier);
std::string indexName(const EntityDescription& entity, const IndexDescription& index);
std::string intervalIndexName(const EntityDescription& entity, const IntervalDescription& interval);

struct ColumnText {
    std::string name;
    std::string type;  ///< as declared
};
/// Columns of the entity's table without the key: attributes, then to-one relationships.
std::vector<ColumnText> columnsOf(const EntityDescription& entity);
const char* columnType(AttributeType type);

struct IndexText {
    std::string name;
    std::string statement;  ///< letter by letter as SQLite keeps it
};
std::vector<IndexText> indexesOf(const EntityDescription& entity);

/// The statement that creates the entity's table.
std::string tableStatement(const EntityDescription& entity);

/// Writes the model's tables, indexes and metadata, with a new store identifier, into an empty database. To
/// be called within a transaction.
bool createSchema(Database& database, const ManagedObjectModel& model, Error* error);

/// Writes the text of the model into the metadata, and the number of the schema that goes with it. To be
/// called within the transaction that made or changed tables or indexes, after that.
bool recordModel(Database& database, const ManagedObjectModel& model, Error* error);

struct PreparedStore {
    std::unique_ptr<Database> database;
    std::string storeIdentifier;
};

struct PrepareOptions {
    OpenOptions open;
    bool migrateAutomatically = false;
    std::string journalMode = "DELETE";
    bool secureDelete = false;     ///< zeros are written over what is deleted
    bool lockExclusively = false;  ///< locks are held from their first use until the connection ends
};

/// Opens the file, creating it with the model's schema when it is new or empty, or brings one of an older
/// version of the model up to date (everything in one transaction). None, with a distinct error and the file
/// untouched, when it is cut short, corrupt, no database, of another application, newer, locked, read-only or
/// cannot be migrated. Columns, tables and indexes that others added are left alone; indexes that miss are
/// made again.
std::optional<PreparedStore> prepareStore(const std::filesystem::path& file, const ManagedObjectModel& model,
                                          const PrepareOptions& options, Error* error);

/// A further connection to a store that was prepared before, with the same settings.
std::unique_ptr<Database> openConnection(const std::filesystem::path& file, const PrepareOptions& options,
                                         Error* error);

}  // namespace orvane::sqlite
