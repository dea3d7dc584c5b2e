#pragma once

#include <sqlite3.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "foundation/internal.h"

namespace orvane::bench {

/// A statement used as any program would use SQLite's own interface; what goes wrong throws
/// std::runtime_error.
class RawStatement {
  public:
    RawStatement(sqlite3* database, const char* sql);
    ~RawStatement() { sqlite3_finalize(statement_); }
    RawStatement(const RawStatement&) = delete;
    RawStatement& operator=(const RawStatement&) = delete;

    void bind(int index, std::int64_t value) { sqlite3_bind_int64(statement_, index, value); }
    void bind(int index, double value) { sqlite3_bind_double(statement_, index, value); }
    /// The text must stay as it is until the statement was reset.
    void bind(int index, std::string_view text) {
        sqlite3_bind_text(statement_, index, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    }
    void bindNull(int index) { sqlite3_bind_null(statement_, index); }
    bool isNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }
    std::int64_t integer(int column) const { return sqlite3_column_int64(statement_, column); }
    double real(int column) const { return sqlite3_column_double(statement_, column); }
    std::string_view text(int column) const {
        const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
        return {bytes ? bytes : "", static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
    }

    /// Whether there is a row.
    bool step();
    void reset() { sqlite3_reset(statement_); }
    /// Runs a statement without rows to its end and makes it ready for the next time.
    void run();

  private:
    sqlite3_stmt* statement_ = nullptr;
};

/// A connection as `sqlite3_open` gives it. What goes wrong throws std::runtime_error.
class RawDatabase {
  public:
    explicit RawDatabase(const std::filesystem::path& file, const std::string& fileSystem = {});
    ~RawDatabase() { sqlite3_close(handle_); }
    RawDatabase(const RawDatabase&) = delete;
    RawDatabase& operator=(const RawDatabase&) = delete;

    void execute(const char* sql);
    sqlite3* handle() const { return handle_; }

    /// Opens raw connections without SQLite's own mutexes from now on.
    static void leaveOutMutexes() { flags_ |= SQLITE_OPEN_NOMUTEX; }

  private:
    static inline int flags_ = SQLITE_OPEN_READWRITE;

    sqlite3* handle_ = nullptr;
};

}  // namespace orvane::bench
