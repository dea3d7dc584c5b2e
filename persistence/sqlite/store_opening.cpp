#include <algorithm>
#include <array>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "persistence/persistence_errors.h"
#include "persistence/sqlite/migration.h"
#include "persistence/sqlite/schema.h"
#include "persistence/sqlite/store_inspection.h"

namespace orvane::sqlite {

namespace {

Error otherError(const Database& database, const std::string& what) {
    return Error(persistenceErrorDomain, storeOtherError,
                 "The database \"" + database.file().string() + "\" " + what);
}

/// Settings of the connection that need no look into the file.
bool configure(Database& database, Error* error) {
    // Deletions follow the model's rules, not SQL's; and a schema that others wrote into may call no function
    // of ours.
    sqlite3_db_config(database.handle(), SQLITE_DBCONFIG_ENABLE_FKEY, 0, nullptr);
    sqlite3_db_config(database.handle(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    // A column that misses is an error, not a text in double quotation marks.
    sqlite3_db_config(database.handle(), SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    return database.execute("PRAGMA temp_store = MEMORY; PRAGMA cell_size_check = ON", error);
}

/// Every commit is on the disk when it returns. Set after the first look at the file, whose failures are told
/// apart; where SQLite was built with that as its default there is nothing to set.
bool commitDurably(Database& database, Error* error) {
    static const bool isDefault = sqlite3_compileoption_used("DEFAULT_SYNCHRONOUS=2") != 0 &&
                                  sqlite3_compileoption_used("DEFAULT_WAL_SYNCHRONOUS=2") != 0;
    return isDefault || database.execute("PRAGMA synchronous = FULL", error);
}

bool isMode(const std::string& mode, const char* name) { return sqlite3_stricmp(mode.c_str(), name) == 0; }

/// A file in write-ahead mode stays in it, and others go back to DELETE with each connection. `writeAhead` is
/// how the file is now.
bool setJournalMode(Database& database, const std::string& mode, bool writeAhead, Error* error) {
    if (isMode(mode, writeAhead ? "WAL" : "DELETE")) return true;
    constexpr std::array known{"DELETE", "TRUNCATE", "PERSIST", "MEMORY", "WAL", "OFF"};
    if (std::ranges::none_of(known, [&](const char* name) { return isMode(mode, name); })) {
        assignError(error, otherError(database, "has no journal mode \"" + mode + "\"."));
        return false;
    }
    const auto inForce = database.singleValue("PRAGMA journal_mode = " + mode, error);
    if (!inForce) return false;
    if (const std::string* text = inForce->asString(); text && isMode(mode, text->c_str())) return true;
    assignError(error, otherError(database, "cannot be used in journal mode \"" + mode + "\"."));
    return false;
}

/// SQLite opens a file for reading when it may not be written, and only finds out about its folder when the
/// first journal is made. Both are found out here, before anything depends on it.
bool demandWritable(Database& database, Error* error) {
    const std::filesystem::path path(sqlite3_db_filename(database.handle(), "main"));
    if (sqlite3_db_readonly(database.handle(), "main") == 0 &&
        ::faccessat(AT_FDCWD, path.parent_path().c_str(), W_OK | X_OK, AT_EACCESS) == 0)
        return true;
    assignError(error,
                errorForCode(sqlite3_db_readonly(database.handle(), "main") == 0 ? SQLITE_READONLY_DIRECTORY
                                                                                 : SQLITE_READONLY,
                             "opened for reading only", database.file()));
    return false;
}

/// Earlier versions, copies and backups may have left the file open to others. Journals take its mode.
void restrictToUser(const Database& database) {
    const char* path = sqlite3_db_filename(database.handle(), "main");
    struct stat status {};
    if (::stat(path, &status) == 0 && status.st_uid == ::geteuid() && (status.st_mode & 077) != 0)
        ::chmod(path, status.st_mode & 0700);
}

bool makeIndexes(Database& database, const std::vector<IndexText>& indexes, Error* error) {
    return std::ranges::all_of(indexes, [&](const IndexText& index) {
        const std::string drop = "DROP INDEX IF EXISTS " + sqlite::quoted(index.name);
        return database.execute(drop.c_str(), error) && database.execute(index.statement.c_str(), error);
    });
}

bool needsWork(const StoreInspection& inspection) {
    return inspection.empty || inspection.storedModel || !inspection.indexesToMake.empty();
}

/// Creates, migrates or mends in one transaction. The file is looked at again under the write lock, since
/// another program may have done the same in between.
std::optional<StoreInspection> bringUpToDate(Database& database, const ManagedObjectModel& model,
                                             Error* error) {
    Transaction transaction(database, Transaction::Kind::write, error);
    if (!transaction.begun()) return std::nullopt;
    const auto found = inspectStore(database, model, error);
    if (!found) return std::nullopt;
    const bool done = found->empty         ? createSchema(database, model, error)
                      : found->storedModel ? migrate(database, *found->storedModel, model, error)
                                           : makeIndexes(database, found->indexesToMake, error) &&
                                                 recordModel(database, model, error);
    if (!done || !transaction.commit(error)) return std::nullopt;
    return inspectStore(database, model, error);
}

}  // namespace

std::optional<PreparedStore> prepareStore(const std::filesystem::path& file, const ManagedObjectModel& model,
                                          const PrepareOptions& options, Error* error) {
    auto database = Database::open(file, options.open, error);
    if (!database || !configure(*database, error)) return std::nullopt;
    auto found = inspectStore(*database, model, error);
    if (!found || !commitDurably(*database, error)) return std::nullopt;
    if (found->empty && (options.open.readOnly || !options.open.create)) {
        assignError(error, Error(persistenceErrorDomain, storeCannotOpenError,
                                 "The database \"" + file.string() + "\" is empty."));
        return std::nullopt;
    }
    if (found->storedModel && !options.migrateAutomatically) {
        assignError(error, Error(persistenceErrorDomain, migrationNotAllowedError,
                                 "The database \"" + file.string() +
                                     "\" was written by an older version of this "
                                     "application and must be brought up to date first."));
        return std::nullopt;
    }
    // Fetches name some of the indexes, so a file for reading cannot go without them either.
    if ((!options.open.readOnly || needsWork(*found)) && !demandWritable(*database, error))
        return std::nullopt;
    if (!options.open.readOnly) restrictToUser(*database);
    if (needsWork(*found)) {
        found = bringUpToDate(*database, model, error);
        if (!found) return std::nullopt;
    }
    if (!options.open.readOnly && !setJournalMode(*database, options.journalMode, found->writeAhead, error))
        return std::nullopt;
    if (options.secureDelete && !database->execute("PRAGMA secure_delete = ON", error)) return std::nullopt;
    if (options.lockExclusively && !database->execute("PRAGMA locking_mode = EXCLUSIVE", error))
        return std::nullopt;
    return PreparedStore{std::move(database), std::move(found->storeIdentifier)};
}

std::unique_ptr<Database> openConnection(const std::filesystem::path& file, const PrepareOptions& options,
                                         Error* error) {
    OpenOptions existing = options.open;
    existing.create = false;
    auto database = Database::open(file, existing, error);
    if (!database || !configure(*database, error) || !commitDurably(*database, error)) return nullptr;
    const bool perFile = isMode(options.journalMode, "DELETE") || isMode(options.journalMode, "WAL");
    if (!perFile && !options.open.readOnly && !setJournalMode(*database, options.journalMode, false, error))
        return nullptr;
    return database;
}

}  // namespace orvane::sqlite
