#pragma once

#include <sqlite3.h>

#include <set>
#include <string>

#include "foundation/internal.h"

namespace orvane::bench {

/// Watches a connection prepare statements: SQLite asks an authorizer while it compiles one, and at no other
/// time.
class StatementWatch {
  public:
    explicit StatementWatch(sqlite3* connection) : connection_(connection) {
        sqlite3_set_authorizer(connection_, &StatementWatch::authorize, this);
    }
    /// The connection must still be open.
    ~StatementWatch() { sqlite3_set_authorizer(connection_, nullptr, nullptr); }
    StatementWatch(const StatementWatch&) = delete;
    StatementWatch& operator=(const StatementWatch&) = delete;

    /// Questions asked so far; unchanged while nothing is prepared.
    std::size_t questions() const { return questions_; }
    /// `Table.column` of every column that a prepared statement writes.
    const std::set<std::string>& writtenColumns() const { return writtenColumns_; }

  private:
    static int authorize(void* watch, int action, const char* first, const char* second, const char*,
                         const char*) {
        auto& self = *static_cast<StatementWatch*>(watch);
        ++self.questions_;
        if (action == SQLITE_UPDATE) self.writtenColumns_.insert(std::string(first) + "." + second);
        return SQLITE_OK;
    }

    sqlite3* connection_;
    std::size_t questions_ = 0;
    std::set<std::string> writtenColumns_;
};

}  // namespace orvane::bench
