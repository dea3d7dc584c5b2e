#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <sqlite3.h>

#include "foundation/error.h"
#include "foundation/internal.h"
#include "foundation/value.h"

namespace orvane::sqlite {

class Database;

/// A prepared statement of one connection. Values are bound from 1, columns are read from 0.
class Statement {
  public:
    Statement() = default;
    Statement(sqlite3_stmt* statement) : statement_(statement) {}
    Statement(Statement&& other) noexcept : statement_(std::exchange(other.statement_, nullptr)) {}
    Statement& operator=(Statement&& other) noexcept {
        std::swap(statement_, other.statement_);
        return *this;
    }
    ~Statement() { sqlite3_finalize(statement_); }

    explicit operator bool() const { return statement_ != nullptr; }
    sqlite3_stmt* handle() const { return statement_; }

    /// Texts are bound without a copy: they must stay until the statement is reset.
    void bind(int index, const Value& value);
    void bind(int index, std::int64_t value) { sqlite3_bind_int64(statement_, index, value); }
    void bind(int index, double value) { sqlite3_bind_double(statement_, index, value); }
    void bind(int index, std::string_view text) {
        sqlite3_bind_text64(statement_, index, text.data() ? text.data() : "", text.size(), SQLITE_STATIC,
                            SQLITE_UTF8);
    }
    void bindNull(int index) { sqlite3_bind_null(statement_, index); }

    /// SQLITE_ROW, SQLITE_DONE or an error code.
    int step() { return sqlite3_step(statement_); }
    void reset() {
        sqlite3_reset(statement_);
        sqlite3_clear_bindings(statement_);
    }

    bool isNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }
    std::int64_t integer(int column) const { return sqlite3_column_int64(statement_, column); }
    double real(int column) const { return sqlite3_column_double(statement_, column); }
    std::string_view text(int column) const {
        const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
        return {bytes ? bytes : "", static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
    }

  private:
    sqlite3_stmt* statement_ = nullptr;
};

/// Resets a cached statement when a use of it ends, so that no read lock stays behind.
class StatementUse {
  public:
    explicit StatementUse(Statement& statement) : statement_(&statement) {}
    StatementUse(const StatementUse&) = delete;
    StatementUse& operator=(const StatementUse&) = delete;
    ~StatementUse() { statement_->reset(); }
    Statement* operator->() const { return statement_; }
    Statement& operator*() const { return *statement_; }

  private:
    Statement* statement_;
};

struct OpenOptions {
    std::string fileSystem;  ///< name of the SQLite VFS; empty for the usual one
    bool create = false;
    bool readOnly = false;
    /// How long a call waits at most for another's lock. Calls that come within a quarter of a second after
    /// one that waited in vain do not wait at all, so that several in a row take hardly longer than one. The
    /// default suits a main thread.
    int busyTimeoutMilliseconds = 25;
};

/// One connection to a database file. Used by one thread at a time, which is why SQLite's own mutexes are
/// left out.
class Database {
  public:
    /// None, with an error, when the file cannot be opened. New files get mode 0600.
    static std::unique_ptr<Database> open(const std::filesystem::path& file, const OpenOptions& options,
                                          Error* error);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// The statement of that text, prepared on first use and kept. None when it cannot be prepared.
    Statement* prepared(std::string_view sql, Error* error);
    /// Runs statements that yield no rows of interest. False, with an error, at the first that fails.
    bool execute(const char* sql, Error* error);
    /// First column of the first row as a value (integer, real, text or none).
    std::optional<Value> singleValue(std::string_view sql, Error* error);

    /// The error of the call that failed last on this connection, in `persistenceErrorDomain`.
    Error lastError() const;

    /// Another file, or none, stands where this one was opened: nothing is written to this one any more, as
    /// the error says.
    bool wasMoved(Error* error) const;

    sqlite3* handle() const { return handle_; }
    const std::filesystem::path& file() const { return file_; }

  private:
    /// How long is waited for locks, and since when.
    struct Patience {
        std::chrono::milliseconds most;
        std::chrono::steady_clock::time_point began = {};
        std::chrono::steady_clock::time_point gaveUp = {};
    };
    static int waitForLock(void* patience, int round);

    Database(sqlite3* handle, std::filesystem::path file, int busyTimeoutMilliseconds)
        : handle_(handle),
          file_(std::move(file)),
          patience_{std::chrono::milliseconds(busyTimeoutMilliseconds)} {}

    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
    };

    sqlite3* handle_;
    std::filesystem::path file_;
    Patience patience_;
    std::unordered_map<std::string, Statement, TextHash, std::equal_to<>> statements_;
};

/// The error for an SQLite result code (extended codes included) met while working on `file`.
Error errorForCode(int code, std::string_view message, const std::filesystem::path& file);

/// Operations that see the file in one state, and that are rolled back unless they were committed.
class Transaction {
  public:
    enum class Kind {
        read,   ///< takes the read lock with the first read
        write,  ///< takes the write lock at once
    };

    /// Check `begun` before use.
    Transaction(Database& database, Kind kind, Error* error);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /// False when it could not begin, and once SQLite rolled it back by itself.
    bool begun() const { return open_ && sqlite3_get_autocommit(database_.handle()) == 0; }
    Kind kind() const { return kind_; }
    bool commit(Error* error);

  private:
    Database& database_;
    Kind kind_;
    bool open_ = false;
};

}  // namespace orvane::sqlite
