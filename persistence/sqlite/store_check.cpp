#include "persistence/store_check.h"

#include <cmath>

#include <sys/stat.h>

#include "persistence/persistence_errors.h"
#include "persistence/sqlite/private_copy.h"
#include "persistence/sqlite/schema.h"
#include "persistence/sqlite/store_inspection.h"

namespace orvane {

namespace {

using sqlite::Database;
using sqlite::Statement;
using Kind = StoreFinding::Kind;

constexpr int mostMessages = 20;
constexpr double earliestSense = 0;           // seconds since the epoch: before there were such desktops
constexpr double farthestFuture = 2 * 86400;  // seconds: clocks and time zones may be off by a day

class Checker {
  public:
    Checker(Database& database, const ManagedObjectModel& model, Date today,
            const std::function<void(const std::string&)>& next, StoreCheck& result)
        : database_(database), model_(model), today_(today), next_(next), result_(result) {}

    /// False, with an error, when it could not be finished for a reason outside the file.
    bool run(Error* error) {
        error_ = error;
        if (!checkInspection() || !checkIntegrity() || !checkForeignKeys()) return false;
        for (const EntityDescription& entity : model_.entities()) {
            next_(entity.name);
            if (!countRows(entity) || !checkKeys(entity) || !checkValues(entity)) return false;
            for (const RelationshipDescription& relationship : entity.relationships)
                if (!relationship.toMany && !checkRelationship(entity, relationship)) return false;
            for (const IntervalDescription& interval : entity.intervals)
                if (!checkInterval(entity, interval)) return false;
        }
        return true;
    }

  private:
    void add(Kind kind, std::string what, std::uint64_t rows = 0) {
        result_.findings.push_back({kind, std::move(what), rows});
    }
    void addRows(Kind kind, std::uint64_t rows, const std::string& what) {
        if (rows > 0) add(kind, what, rows);
    }

    /// The file cannot answer: a finding when it is at fault itself, which is told once.
    bool failed(const Error& failure) {
        if (failure.code() != storeCorruptError && failure.code() != storeOtherError) {
            assignError(error_, failure);
            return false;
        }
        if (!unreadable_) add(Kind::damage, "parts of it cannot be read");
        unreadable_ = true;
        return true;
    }

    bool checkInspection() {
        next_("schema");
        Error failure;
        const auto found = sqlite::inspectStore(database_, model_, &failure);
        if (!found && failure.code() != storeCorruptError) {
            assignError(error_, failure);
            return false;
        }
        if (!found) {
            const std::string reason = failure.localizedFailureReason();
            add(Kind::damage, reason.empty() ? failure.localizedDescription() : reason);
        } else if (found->empty) {
            isEmpty_ = true;
        } else if (found->storedModel) {
            add(Kind::oddity,
                "it was written by an older version and is brought up to date when it is opened");
        } else if (!found->indexesToMake.empty()) {
            add(Kind::oddity, "indexes are missing or changed; they are made anew when it is opened");
        }
        return true;
    }

    bool checkIntegrity() {
        next_("pages and indexes");
        return forEachRow("PRAGMA integrity_check(" + std::to_string(mostMessages) + ")",
                          [&](const Statement& row) {
                              if (row.text(0) != "ok") add(Kind::damage, std::string(row.text(0)));
                          });
    }

    bool checkForeignKeys() {
        std::uint64_t rows = 0;
        if (!forEachRow("PRAGMA foreign_key_check", [&](const Statement&) { ++rows; })) return false;
        addRows(Kind::damage, rows, "rows with foreign keys that lead nowhere");
        return true;
    }

    bool countRows(const EntityDescription& entity) {
        std::uint64_t rows = 0;
        const bool read = count("SELECT count(*) FROM " + sqlite::quoted(entity.name) + " NOT INDEXED", rows);
        if (!unreadable_ && !isEmpty_) result_.rows.emplace_back(entity.name, rows);
        return read;
    }

    /// Keys count up and are never given out twice.
    bool checkKeys(const EntityDescription& entity) {
        const std::string rows = "SELECT count(*) FROM " + sqlite::quoted(entity.name) + " WHERE \"_id\" ";
        const std::string last =
            "coalesce((SELECT \"last\" FROM \"_keys\" WHERE \"entity\" = '" + entity.name + "'), 0)";
        return report(Kind::damage, rows + "<= 0",
                      entity.name + " rows with keys that are never given out") &&
               report(Kind::damage, rows + "> " + last,
                      entity.name + " rows with keys that could be given out again");
    }

    bool checkValues(const EntityDescription& entity) {
        const std::string from = " FROM " + sqlite::quoted(entity.name) + " WHERE ";
        for (const AttributeDescription& attribute : entity.attributes) {
            const std::string column = sqlite::quoted(attribute.name);
            const std::string named = entity.name + " rows whose " + attribute.name;
            if (!attribute.optional &&
                !report(Kind::damage, "SELECT count(*)" + from + column + " IS NULL", named + " is missing"))
                return false;
            if (attribute.type == AttributeType::boolean &&
                !report(Kind::damage, "SELECT count(*)" + from + column + " NOT IN (0, 1)",
                        named + " is neither true nor false"))
                return false;
            if (attribute.type == AttributeType::text && !checkTexts(entity, attribute)) return false;
            if (attribute.type != AttributeType::date) continue;
            const std::string future = std::to_string(secondsSinceEpoch(today_) + farthestFuture);
            if (!report(Kind::oddity,
                        "SELECT count(*)" + from + column + " < " + std::to_string(earliestSense),
                        named + " lies before 1970") ||
                !report(Kind::oddity, "SELECT count(*)" + from + column + " > " + future,
                        named + " lies in the future"))
                return false;
        }
        return true;
    }

    /// All texts are valid UTF-8 and hold no zero byte.
    bool checkTexts(const EntityDescription& entity, const AttributeDescription& attribute) {
        std::uint64_t rows = 0;
        const std::string column = sqlite::quoted(attribute.name);
        if (!forEachRow("SELECT " + column + " FROM " + sqlite::quoted(entity.name) + " WHERE " + column +
                            " IS NOT NULL",
                        [&](const Statement& row) { rows += sqlite::isStorableText(row.text(0)) ? 0 : 1; }))
            return false;
        addRows(Kind::damage, rows, entity.name + " rows whose " + attribute.name + " is no text in UTF-8");
        return true;
    }

    /// The other end of a relationship has no column: it is this one, looked up by its index.
    bool checkRelationship(const EntityDescription& entity, const RelationshipDescription& relationship) {
        const std::string column = sqlite::quoted(relationship.name);
        const std::string rows =
            "SELECT count(*) FROM " + sqlite::quoted(entity.name) + " NOT INDEXED WHERE ";
        if (!report(Kind::damage,
                    rows + column + " IS NOT NULL AND " + column + " NOT IN (SELECT \"_id\" FROM " +
                        sqlite::quoted(relationship.destination) + ")",
                    entity.name + " rows whose " + relationship.name + " does not exist"))
            return false;
        // Where there are spans of time, somebody has to have spent it.
        if (relationship.optional && entity.intervals.empty()) return true;
        return report(relationship.optional ? Kind::oddity : Kind::damage, rows + column + " IS NULL",
                      entity.name + " rows without " + relationship.name);
    }

    /// Spans run forwards and, as they are of one user at one desktop, do not overlap.
    bool checkInterval(const EntityDescription& entity, const IntervalDescription& interval) {
        const std::string start = sqlite::quoted(interval.start);
        const std::string end = sqlite::quoted(interval.end);
        const std::string from = " FROM " + sqlite::quoted(entity.name) + " NOT INDEXED WHERE ";
        if (!report(Kind::oddity, "SELECT count(*)" + from + end + " < " + start,
                    entity.name + " rows that end before they begin") ||
            !report(Kind::oddity, "SELECT count(*)" + from + start + " IS NULL OR " + end + " IS NULL",
                    entity.name + " rows without beginning or end"))
            return false;
        std::uint64_t overlapping = 0;
        double covered = -INFINITY;
        if (!forEachRow("SELECT " + start + ", " + end + from + start + " < " + end + " ORDER BY " + start,
                        [&](const Statement& row) {
                            if (row.real(0) < covered) ++overlapping;
                            covered = std::max(covered, row.real(1));
                        }))
            return false;
        addRows(Kind::oddity, overlapping, entity.name + " rows that overlap one before them");
        return true;
    }

    bool report(Kind kind, const std::string& countSql, const std::string& what) {
        std::uint64_t rows = 0;
        if (!count(countSql, rows)) return false;
        addRows(kind, rows, what);
        return true;
    }
    bool count(const std::string& sql, std::uint64_t& rows) {
        return forEachRow(sql,
                          [&](const Statement& row) { rows = static_cast<std::uint64_t>(row.integer(0)); });
    }
    template <class Take>
    bool forEachRow(const std::string& sql, const Take& take) {
        if (isEmpty_) return true;
        sqlite3_stmt* handle = nullptr;
        if (sqlite3_prepare_v2(database_.handle(), sql.c_str(), -1, &handle, nullptr) != SQLITE_OK)
            return failed(database_.lastError());
        Statement statement(handle);
        int code = SQLITE_ROW;
        while ((code = statement.step()) == SQLITE_ROW) take(statement);
        return code == SQLITE_DONE || failed(database_.lastError());
    }

    Database& database_;
    const ManagedObjectModel& model_;
    Date today_;
    const std::function<void(const std::string&)>& next_;
    StoreCheck& result_;
    Error* error_ = nullptr;
    bool unreadable_ = false;
    bool isEmpty_ = false;
};

constexpr int longestWait = 5000;  // milliseconds

bool checkFile(const std::filesystem::path& file, const ManagedObjectModel& model, Date today,
               const std::function<void(const std::string&)>& next, StoreCheck& result, Error* error) {
    sqlite::OpenOptions options;
    options.readOnly = true;
    options.busyTimeoutMilliseconds = longestWait;
    const auto database = Database::open(file, options, error);
    if (!database) return false;
    sqlite3_db_config(database->handle(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(database->handle(), SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    if (!database->execute("PRAGMA cell_size_check = ON", error)) return false;
    return Checker(*database, model, today, next, result).run(error);
}

}  // namespace

std::optional<StoreCheck> checkStore(const std::filesystem::path& file, const ManagedObjectModel& model,
                                     Date today, const std::function<void(const std::string&)>& next,
                                     Error* error) {
    StoreCheck result;
    Error failure;
    if (checkFile(file, model, today, next, result, &failure)) return result;
    // A save that was cut off is taken back by the next program that opens the file to write. It is checked
    // as it will be then: in a copy, since the file itself is not to be changed.
    struct stat journal {};
    const std::string journalName = file.string() + "-journal";
    if (::stat(journalName.c_str(), &journal) != 0 || journal.st_size == 0) {
        assignError(error, failure);
        return std::nullopt;
    }
    next("a copy without the save that was cut off");
    // The store's own folder is as private as it is.
    auto copy = sqlite::PrivateCopy::make(file, std::filesystem::absolute(file).parent_path(), nullptr);
    if (!copy) copy = sqlite::PrivateCopy::make(file, std::filesystem::temp_directory_path(), error);
    if (!copy) return std::nullopt;
    result = StoreCheck();
    result.cutSaveLeftOut = true;
    if (!checkFile(copy->file(), model, today, next, result, error)) return std::nullopt;
    return result;
}

}  // namespace orvane
