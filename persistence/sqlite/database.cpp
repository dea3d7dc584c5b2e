#include "persistence/sqlite/database.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "persistence/persistence_errors.h"

namespace orvane::sqlite {

namespace {

Error cannotOpen(const std::filesystem::path& file, const std::string& why) {
    return Error(persistenceErrorDomain, storeCannotOpenError,
                 "The database \"" + file.string() + "\" cannot be opened: " + why);
}

/// Makes sure that a plain file stands there, so that SQLite neither waits on a pipe nor creates a file with
/// a mode of its own. Journals take their mode from the file.
///
/// A file that exists must not be opened here: closing it would drop the locks that this process's other
/// connections hold on it, as POSIX has it.
bool demandPlainFile(const std::filesystem::path& file, bool create, Error* error) {
    const auto refuse = [&](const std::string& why) {
        assignError(error, cannotOpen(file, why));
        return false;
    };
    if (file.native().find('\0') != std::string::npos) return refuse("its name holds a zero byte.");
    struct stat status {};
    if (::stat(file.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) return refuse("a folder stands in its place. Move the folder away.");
        if (!S_ISREG(status.st_mode))
            return refuse("what stands in its place is no plain file. Move it away.");
        // SQLite takes a file of one byte for an empty one and would write over it.
        if (status.st_size == 1) {
            assignError(error, errorForCode(SQLITE_NOTADB, "a single byte", file));
            return false;
        }
        return true;
    }
    if (errno == ENOENT && create) {
        const int descriptor =
            ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
        if (descriptor >= 0) {
            // Whatever the umask: without rights of our own it could not be opened again.
            ::fchmod(descriptor, 0600);
            ::close(descriptor);
            return true;
        }
    }
    switch (errno) {
        case ENOENT:
            return refuse(create ? "its folder does not exist. Create the folder."
                                 : "there is no such file.");
        case ENOTDIR:
            return refuse("a file stands where its folder should be. Move that file away.");
        case ELOOP:
            return refuse("it is a symbolic link that leads nowhere.");
        case EROFS:
        case EACCES:
        case EPERM:
            if (create && ::access(file.parent_path().c_str(), X_OK) == 0) {
                assignError(error,
                            Error(persistenceErrorDomain, storeReadOnlyError,
                                  "The folder of the database \"" + file.string() +
                                      "\" cannot be written. Give yourself permission to write there."));
                return false;
            }
            return refuse("there is no permission to open it. Check the permissions of its folder.");
        case ENOSPC:
        case EDQUOT:
            assignError(error, errorForCode(SQLITE_FULL, std::strerror(errno), file));
            return false;
        default:
            return refuse(std::string(std::strerror(errno)) + ".");
    }
}

}  // namespace

// Locks are held for as long as a commit or a piece of a long read takes, so short waits lose the least;
// those of SQLite's own handler grow to a tenth of a second.
int Database::waitForLock(void* state, int round) {
    constexpr std::chrono::microseconds pause(250);
    constexpr std::chrono::milliseconds untilPatientAgain(250);
    auto& patience = *static_cast<Patience*>(state);
    const auto now = std::chrono::steady_clock::now();
    if (round == 0) {
        // Whoever holds a lock for so long will hold it a while longer.
        const bool hasGivenUp = patience.gaveUp != std::chrono::steady_clock::time_point{};
        if (hasGivenUp && now - patience.gaveUp < untilPatientAgain) return 0;
        patience.began = now;
    }
    if (now - patience.began >= patience.most) {
        patience.gaveUp = now;
        return 0;
    }
    ::usleep(static_cast<useconds_t>(pause.count()));
    return 1;
}

void Statement::bind(int index, const Value& value) {
    if (value.isNone()) {
        bindNull(index);
    } else if (const bool* boolean = value.asBool()) {
        bind(index, std::int64_t{*boolean});
    } else if (const std::int64_t* integer = value.asInteger()) {
        bind(index, *integer);
    } else if (const double* real = value.asDouble()) {
        bind(index, *real);
    } else if (const DecimalSeconds* decimal = value.asDecimal()) {
        bind(index, std::int64_t{decimal->count()});
    } else if (const Date* date = value.asDate()) {
        bind(index, secondsSinceEpoch(*date));
    } else if (const std::string* text = value.asString()) {
        bind(index, std::string_view(*text));
    } else if (const Data* data = value.asData()) {
        // No bytes are not the same as no value.
        if (data->empty())
            sqlite3_bind_zeroblob(statement_, index, 0);
        else
            sqlite3_bind_blob64(statement_, index, data->data(), data->size(), SQLITE_STATIC);
    } else {
        throw std::invalid_argument("a value of kind " + std::string(value.kindName()) + " cannot be stored");
    }
}

std::unique_ptr<Database> Database::open(const std::filesystem::path& file, const OpenOptions& options,
                                         Error* error) {
    // An absolute path cannot be taken for a URI or for one of SQLite's names of databases in memory.
    std::error_code failure;
    const std::filesystem::path path = std::filesystem::absolute(file, failure);
    if (failure || file.empty()) {
        assignError(error, cannotOpen(file, "this is no path of a file."));
        return nullptr;
    }
    if (!demandPlainFile(path, options.create && !options.readOnly, error)) return nullptr;
    sqlite3* handle = nullptr;
    const int flags = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE | SQLITE_OPEN_EXRESCODE |
                      (options.readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE);
    const int code = sqlite3_open_v2(path.c_str(), &handle, flags,
                                     options.fileSystem.empty() ? nullptr : options.fileSystem.c_str());
    if (code != SQLITE_OK) {
        assignError(error, errorForCode(code, handle ? sqlite3_errmsg(handle) : sqlite3_errstr(code), file));
        sqlite3_close(handle);
        return nullptr;
    }
    std::unique_ptr<Database> database(new Database(handle, file, options.busyTimeoutMilliseconds));
    sqlite3_busy_handler(handle, &Database::waitForLock, &database->patience_);
    return database;
}

Database::~Database() {
    statements_.clear();
    sqlite3_close_v2(handle_);
}

Statement* Database::prepared(std::string_view sql, Error* error) {
    if (const auto found = statements_.find(sql); found != statements_.end()) return &found->second;
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v3(handle_, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                           &statement, nullptr) != SQLITE_OK) {
        assignError(error, lastError());
        return nullptr;
    }
    return &statements_.emplace(sql, Statement(statement)).first->second;
}

bool Database::execute(const char* sql, Error* error) {
    if (sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr) == SQLITE_OK) return true;
    assignError(error, lastError());
    return false;
}

std::optional<Value> Database::singleValue(std::string_view sql, Error* error) {
    Statement* statement = prepared(sql, error);
    if (!statement) return std::nullopt;
    const StatementUse use(*statement);
    const int code = use->step();
    if (code == SQLITE_DONE) return Value();
    if (code != SQLITE_ROW) {
        assignError(error, lastError());
        return std::nullopt;
    }
    switch (sqlite3_column_type(use->handle(), 0)) {
        case SQLITE_INTEGER:
            return Value(use->integer(0));
        case SQLITE_FLOAT:
            return Value(use->real(0));
        case SQLITE_NULL:
            return Value();
        default:
            return Value(use->text(0));
    }
}

bool Database::wasMoved(Error* error) const {
    int moved = 0;
    if (sqlite3_file_control(handle_, "main", SQLITE_FCNTL_HAS_MOVED, &moved) != SQLITE_OK || !moved)
        return false;
    // SQLite also says so of a file that it may not look at just now.
    struct stat status {};
    if (::stat(sqlite3_db_filename(handle_, "main"), &status) != 0 && errno != ENOENT && errno != ENOTDIR)
        return false;
    assignError(error, errorForCode(SQLITE_READONLY_DBMOVED, "another file, or none, stands there", file_));
    return true;
}

Error Database::lastError() const {
    int code = sqlite3_extended_errcode(handle_);
    // SQLite knows one sign of a full disk. A used-up quota and a limit on the size of files are the same to
    // people.
    if ((code & 0xff) == SQLITE_IOERR) {
        const int system = sqlite3_system_errno(handle_);
        if (system == ENOSPC || system == EDQUOT || system == EFBIG) code = SQLITE_FULL;
    }
    return errorForCode(code, sqlite3_errmsg(handle_), file_);
}

Transaction::Transaction(Database& database, Kind kind, Error* error) : database_(database), kind_(kind) {
    Statement* begin = database_.prepared(kind == Kind::write ? "BEGIN IMMEDIATE" : "BEGIN", error);
    if (!begin) return;
    const StatementUse use(*begin);
    open_ = use->step() == SQLITE_DONE;
    if (!open_) assignError(error, database_.lastError());
}

Transaction::~Transaction() {
    // Some failures, a full disk among them, make SQLite roll back by itself.
    if (!begun()) return;
    if (Statement* rollback = database_.prepared("ROLLBACK", nullptr)) {
        const StatementUse use(*rollback);
        use->step();
    }
}

bool Transaction::commit(Error* error) {
    Statement* statement = database_.prepared("COMMIT", error);
    if (!statement) return false;
    const StatementUse use(*statement);
    if (use->step() != SQLITE_DONE) {
        assignError(error, database_.lastError());
        return false;
    }
    open_ = false;
    return true;
}

}  // namespace orvane::sqlite
