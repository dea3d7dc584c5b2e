#include <utility>

#include "persistence/persistence_errors.h"
#include "persistence/sqlite/database.h"

namespace orvane::sqlite {

namespace {

struct Meaning {
    PersistenceErrorCode code;
    const char* what;  ///< completes "The database "file" …"
};

constexpr Meaning corrupt{storeCorruptError,
                          "is damaged. Put back a copy of it, or move it away to begin with a new one."};
constexpr Meaning outOfMemory{storeOutOfMemoryError,
                              "could not be used for want of memory. Close other programs."};

Meaning meaningOf(int code) {
    switch (code) {
        case SQLITE_IOERR_NOMEM:
            return outOfMemory;
        case SQLITE_IOERR_SHORT_READ:
        case SQLITE_IOERR_DATA:
            return corrupt;
        case SQLITE_READONLY_DBMOVED:
            return {storeInputOutputError,
                    "was deleted, moved or replaced while it was in use. What is recorded from now on goes "
                    "into the file that stands in its place, or into a new one."};
        case SQLITE_READONLY_DIRECTORY:
            return {storeReadOnlyError,
                    "lies in a folder that cannot be written. Give yourself permission to write there."};
        default:
            break;
    }
    switch (code & 0xff) {
        case SQLITE_NOTADB:
            return {storeNotDatabaseError, "is no database. Move it away; it was left as it is."};
        case SQLITE_CORRUPT:
        case SQLITE_FORMAT:
            return corrupt;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
        case SQLITE_PROTOCOL:
            return {storeLockedError, "is in use by another program. Close that program and try again."};
        case SQLITE_READONLY:
            return {storeReadOnlyError,
                    "cannot be written. Give yourself permission to write to it and to its folder."};
        case SQLITE_FULL:
            return {storeFullError, "cannot grow: the disk is full. Free some space and try again."};
        case SQLITE_IOERR:
            return {storeInputOutputError, "could not be read or written. Check the disk that it lies on."};
        case SQLITE_CANTOPEN:
        case SQLITE_PERM:
        case SQLITE_AUTH:
            return {storeCannotOpenError, "cannot be opened. Check its permissions and those of its folder."};
        case SQLITE_NOMEM:
            return outOfMemory;
        default:
            return {storeOtherError, "could not do what was asked of it."};
    }
}

}  // namespace

Error errorForCode(int code, std::string_view message, const std::filesystem::path& file) {
    const Meaning meaning = meaningOf(code);
    return Error(persistenceErrorDomain, meaning.code,
                 {{NSLocalizedDescriptionKey, "The database \"" + file.string() + "\" " + meaning.what},
                  {NSLocalizedFailureReasonErrorKey,
                   std::string(message) + " (SQLite result " + std::to_string(code) + ")"}});
}

}  // namespace orvane::sqlite
