#include "bench/raw_database.h"

#include <stdexcept>

namespace orvane::bench {

namespace {

[[noreturn]] void fail(sqlite3* database) {
    throw std::runtime_error(std::string("SQLite: ") + sqlite3_errmsg(database));
}

}  // namespace

RawStatement::RawStatement(sqlite3* database, const char* sql) {
    if (sqlite3_prepare_v2(database, sql, -1, &statement_, nullptr) != SQLITE_OK) fail(database);
}

bool RawStatement::step() {
    const int result = sqlite3_step(statement_);
    if (result == SQLITE_ROW) return true;
    if (result != SQLITE_DONE) fail(sqlite3_db_handle(statement_));
    return false;
}

void RawStatement::run() {
    while (step()) {
    }
    reset();
}

RawDatabase::RawDatabase(const std::filesystem::path& file, const std::string& fileSystem) {
    const int result =
        sqlite3_open_v2(file.c_str(), &handle_, flags_, fileSystem.empty() ? nullptr : fileSystem.c_str());
    if (result == SQLITE_OK) return;
    sqlite3_close(handle_);
    throw std::runtime_error(file.string() + ": " + sqlite3_errstr(result));
}

void RawDatabase::execute(const char* sql) {
    if (sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr) != SQLITE_OK) fail(handle_);
}

}  // namespace orvane::bench
