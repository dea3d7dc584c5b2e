#include "trials/store_contents.h"

#include <memory>
#include <optional>
#include <sstream>
#include <unordered_set>

#include <sqlite3.h>

namespace orvane::trials {

namespace {

using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;

// Applications are told by their identifiers, so that which row is which does not matter. Identifiers of
// groups are chosen at random.
constexpr const char* textQuery = R"(
SELECT (SELECT coalesce(group_concat(row, char(10)), '') FROM
        (SELECT 'recording ' || coalesce(r.startDate, '-') || ' ' || coalesce(r.endDate, '-') || ' '
                || coalesce(r.idle, '-') || ' ' || coalesce(a.identifier, '-') || ' '
                || coalesce(r.windowName, '-') AS row
         FROM Recording r LEFT JOIN Application a ON a._id = r.application
         ORDER BY r.startDate, r.endDate, row))
    || char(10) || (SELECT coalesce(group_concat(row, char(10)), '') FROM
        (SELECT DISTINCT 'application ' || a.identifier || ' ' || coalesce(a.name, '-') || ' '
                || coalesce(a.color, '-') || ' ' || coalesce(a.disabled, '-') || ' '
                || coalesce(g.name, '-') AS row
         FROM Application a LEFT JOIN "Group" g ON g._id = a."group" ORDER BY row))
    || char(10) || (SELECT coalesce(group_concat(row, char(10)), '') FROM
        (SELECT 'group ' || g.name || ' ' || coalesce(g.category, '-') || ' ' || coalesce(g.color, '-') AS row
         FROM "Group" g ORDER BY row)))";

/// First column of the first row; none when that fails.
std::optional<std::string> ask(sqlite3* database, const char* sql) {
    sqlite3_stmt* statement = nullptr;
    std::optional<std::string> answer;
    if (sqlite3_prepare_v2(database, sql, -1, &statement, nullptr) == SQLITE_OK &&
        sqlite3_step(statement) == SQLITE_ROW) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
        answer = text ? text : "";
    }
    sqlite3_finalize(statement);
    return answer;
}

}  // namespace

const char* const emptyStoreText = "\n\n";

StoreContents readStore(const std::filesystem::path& file, const std::string& fileSystem) {
    StoreContents contents;
    sqlite3* handle = nullptr;
    const int opened = sqlite3_open_v2(file.c_str(), &handle, SQLITE_OPEN_READWRITE,
                                       fileSystem.empty() ? nullptr : fileSystem.c_str());
    const Database database(handle, &sqlite3_close);
    if (opened != SQLITE_OK) return contents;
    const auto integrity = ask(handle, "PRAGMA integrity_check");
    const auto tables = ask(handle, "SELECT count(*) FROM sqlite_master");
    if (!integrity || !tables) return contents;
    contents.integrity = *integrity;
    contents.isReadable = true;
    if (*tables == "0") {
        contents.text = emptyStoreText;
        return contents;
    }
    const auto text = ask(handle, textQuery);
    const auto doubled = ask(handle,
                             "SELECT group_concat(identifier) FROM (SELECT identifier FROM Application "
                             "GROUP BY identifier HAVING count(*) > 1)");
    const auto recordings = ask(handle, "SELECT count(*) FROM Recording");
    const auto lastEnd = ask(handle, "SELECT coalesce(max(endDate), 0) FROM Recording");
    if (!text || !doubled || !recordings || !lastEnd) return {};
    contents.text = *text;
    contents.doubledApplications = *doubled;
    contents.recordings = std::stoi(*recordings);
    contents.lastEnd = std::stod(*lastEnd);
    return contents;
}

bool holdsLines(const std::string& whole, const std::string& part, std::string_view word) {
    std::unordered_set<std::string> lines;
    std::istringstream there(whole);
    for (std::string line; std::getline(there, line);) lines.insert(line);
    std::istringstream wanted(part);
    for (std::string line; std::getline(wanted, line);)
        if (line.starts_with(word) && !lines.contains(line)) return false;
    return true;
}

}  // namespace orvane::trials
