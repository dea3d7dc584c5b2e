#include "persistence/store_erasure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "persistence/persistence_errors.h"
#include "persistence/sqlite/schema.h"
#include "persistence/sqlite/store.h"

namespace orvane {

namespace {

/// Zeros over the whole file, through to the disk. Zero, or the system's error.
int overwrite(const std::string& file) {
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor < 0) return errno == ENOENT ? 0 : errno;
    struct stat status {};
    int failure = ::fstat(descriptor, &status) == 0 ? 0 : errno;
    const std::vector<char> zeros(1 << 16);
    for (off_t done = 0; failure == 0 && done < status.st_size;) {
        const auto size = std::min(static_cast<std::size_t>(status.st_size - done), zeros.size());
        const ssize_t written = ::pwrite(descriptor, zeros.data(), size, done);
        if (written > 0)
            done += written;
        else if (errno != EINTR)
            failure = errno;
    }
    if (failure == 0 && ::fsync(descriptor) != 0) failure = errno;
    ::close(descriptor);
    return failure;
}

bool removeJournal(const sqlite::Database& database, Error* error) {
    const char* name = sqlite3_filename_journal(sqlite3_db_filename(database.handle(), "main"));
    int failure = overwrite(name);
    if (failure == 0 && ::unlink(name) != 0 && errno != ENOENT) failure = errno;
    if (failure == 0) return true;
    assignError(error, Error(persistenceErrorDomain, storeInputOutputError,
                             "The journal \"" + std::string(name) +
                                 "\" could not be overwritten: " + std::strerror(failure) + ". Remove it."));
    return false;
}

/// The schema gets another number by that, which the library keeps.
bool writeAnew(sqlite::Database& database, const ManagedObjectModel& model, Error* error) {
    // As large as the database: no store should have to fit into memory.
    if (!database.execute("PRAGMA temp_store = FILE", error) || !database.execute("VACUUM", error))
        return false;
    sqlite::Transaction transaction(database, sqlite::Transaction::Kind::write, error);
    return transaction.begun() && sqlite::recordModel(database, model, error) && transaction.commit(error);
}

}  // namespace

PersistentStoreOptions erasingStoreOptions() {
    PersistentStoreOptions options;
    options.migratePersistentStoresAutomatically = true;
    options.inferMappingModel = true;
    options.pragmas = {{"journal_mode", "PERSIST"}, {"secure_delete", "ON"}, {"locking_mode", "EXCLUSIVE"}};
    options.busyTimeoutMilliseconds = 10000;
    return options;
}

bool eraseRemains(PersistentStoreCoordinator& coordinator, Error* error) {
    sqlite::Database& database = coordinator.store()->mainDatabase();
    const bool written = writeAnew(database, coordinator.model(), error);
    Error journalError;
    const bool removed = removeJournal(database, &journalError);
    if (written && !removed) assignError(error, journalError);
    return written && removed;
}

}  // namespace orvane
