#include "persistence/sqlite/store_inspection.h"

#include <algorithm>
#include <array>
#include <map>

#include "persistence/model_reader.h"
#include "persistence/persistence_errors.h"

namespace orvane::sqlite {

namespace {

/// The fields of the database header (https://www.sqlite.org/fileformat.html, 1.3) that tell a store from
/// other files.
struct Header {
    bool empty = false;
    bool writeAhead = false;
    bool cutShort = false;
    std::int64_t application = 0;
    std::int64_t layout = 0;
    std::int64_t schema = 0;  ///< changes with every change of a table or an index
};

std::uint32_t bigEndian(const unsigned char* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
           bytes[3];
}

class Inspector {
  public:
    Inspector(Database& database, const ManagedObjectModel& model, Error* error)
        : database_(database), model_(model), error_(error) {}

    std::optional<StoreInspection> inspect() {
        // Needs no schema, and while it is not finished its read transaction serves all that follows. What
        // fails here fails there again, and is told there.
        Statement transaction = prepared("PRAGMA application_id");
        if (transaction) transaction.step();
        // The first look at the schema puts back what an interrupted transaction left behind, and whatever is
        // wrong with file, folder and locks shows here: only then is the schema loaded on its own.
        Statement metadata = prepared(R"(SELECT "name", "value" FROM "_metadata")");
        const bool hasMetadata = static_cast<bool>(metadata);
        if (!hasMetadata && !loadSchema()) return std::nullopt;
        if (!(hasMetadata ? stepThrough(metadata, &Inspector::takeMetadata) : readHeaderAlone()))
            return std::nullopt;
        if (header_.empty) {
            result_.empty = true;
            return std::move(result_);
        }
        result_.writeAhead = header_.writeAhead;
        if (header_.application != applicationId)
            return refuse(storeForeignError,
                          "belongs to another application. Move it away, or choose another folder.");
        if (header_.layout > layoutVersion) return refuseNewer();
        if (header_.cutShort) return refuseDamaged("the file is shorter than its header says");
        if (header_.layout != layoutVersion)
            return refuseDamaged("its layout number is " + std::to_string(header_.layout));
        if (!hasMetadata) return refuseDamaged("the table \"_metadata\" is missing");
        return judge();
    }

  private:
    std::nullopt_t refuse(PersistenceErrorCode code, const std::string& what,
                          const std::string& reason = {}) {
        Error::UserInfo userInfo{
            {NSLocalizedDescriptionKey, "The database \"" + database_.file().string() + "\" " + what}};
        if (!reason.empty()) userInfo[NSLocalizedFailureReasonErrorKey] = reason;
        assignError(error_, Error(persistenceErrorDomain, code, std::move(userInfo)));
        return std::nullopt;
    }
    std::nullopt_t refuseDamaged(const std::string& reason) {
        return refuse(
            storeCorruptError,
            "is damaged: " + reason + ". Put back a copy of it, or move it away to begin with a new one.",
            reason);
    }
    std::nullopt_t refuseNewer() {
        return refuse(storeNewerError,
                      "was written by a newer version of this application. Install that version.");
    }

    bool loadSchema() {
        // Asking for this setting needs the schema and changes nothing.
        if (sqlite3_exec(database_.handle(), "PRAGMA synchronous", nullptr, nullptr, nullptr) == SQLITE_OK)
            return true;
        // A schema that does not parse, or a file format that SQLite does not know, has no code of its own.
        const int code = sqlite3_extended_errcode(database_.handle());
        assignError(error_,
                    code == SQLITE_ERROR
                        ? errorForCode(SQLITE_CORRUPT, sqlite3_errmsg(database_.handle()), database_.file())
                        : database_.lastError());
        return false;
    }

    /// The column's declared type; none when table or column is missing.
    std::optional<std::string_view> columnType(const std::string& table, const std::string& column) {
        const char* type = nullptr;
        const int code =
            sqlite3_table_column_metadata(database_.handle(), "main", table.c_str(), column.c_str(), &type,
                                          nullptr, nullptr, nullptr, nullptr);
        return code == SQLITE_OK ? std::optional<std::string_view>(type ? type : "") : std::nullopt;
    }

    /// While a statement is stepped through, its read lock keeps the header as it is.
    bool readHeader() {
        sqlite3_file* file = nullptr;
        sqlite3_file_control(database_.handle(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
        sqlite3_int64 size = 0;
        std::array<unsigned char, 100> bytes{};
        int code = file->pMethods->xFileSize(file, &size);
        if (code == SQLITE_OK && size > 0) code = file->pMethods->xRead(file, bytes.data(), bytes.size(), 0);
        if (code != SQLITE_OK) {
            assignError(error_, errorForCode(code, sqlite3_errstr(code), database_.file()));
            return false;
        }
        header_.empty = size == 0;
        header_.writeAhead = bytes[18] == 2;
        header_.schema = bigEndian(&bytes[40]);
        header_.layout = bigEndian(&bytes[60]);
        header_.application = bigEndian(&bytes[68]);
        const std::uint32_t storedPageSize = std::uint32_t{bytes[16]} << 8 | bytes[17];
        const std::int64_t pageSize = storedPageSize == 1 ? 65536 : storedPageSize;
        // The count of pages is only kept by writers that also note the change they kept it at.
        const bool counted = bigEndian(&bytes[24]) == bigEndian(&bytes[92]);
        header_.cutShort = counted && !header_.writeAhead && size < pageSize * bigEndian(&bytes[28]);
        return true;
    }

    /// In write-ahead mode the newest header may lie in the log.
    bool readLoggedHeader() {
        if (!header_.writeAhead) return true;
        const auto application = database_.singleValue("PRAGMA application_id", error_);
        const auto layout = application ? database_.singleValue("PRAGMA user_version", error_) : std::nullopt;
        const auto schema = layout ? database_.singleValue("PRAGMA schema_version", error_) : std::nullopt;
        if (!schema) return false;
        header_.schema = schema->integerValue();
        header_.application = application->integerValue();
        header_.layout = layout->integerValue();
        return true;
    }

    /// None when it cannot be prepared.
    Statement prepared(const char* sql) {
        sqlite3_stmt* handle = nullptr;
        sqlite3_prepare_v2(database_.handle(), sql, -1, &handle, nullptr);
        return Statement(handle);
    }
    bool step(const char* sql, bool (Inspector::*takeRow)(const Statement&)) {
        Statement statement = prepared(sql);
        return statement ? stepThrough(statement, takeRow) : failed();
    }
    bool stepThrough(Statement& statement, bool (Inspector::*takeRow)(const Statement&)) {
        int code = statement.step();
        if ((code == SQLITE_ROW || code == SQLITE_DONE) && !readHeader()) return false;
        for (; code == SQLITE_ROW; code = statement.step())
            if (!(this->*takeRow)(statement)) return false;
        return code == SQLITE_DONE ? readLoggedHeader() : failed();
    }
    bool failed() {
        assignError(error_, database_.lastError());
        return false;
    }

    bool takeMetadata(const Statement& row) {
        metadata_.emplace(row.text(0), row.text(1));
        return true;
    }
    bool readIndexes() {
        return step(
            R"(SELECT "name", "sql" FROM "sqlite_schema" WHERE "type" = 'index' AND "sql" IS NOT NULL)",
            &Inspector::takeIndex);
    }
    bool takeIndex(const Statement& row) {
        indexes_.emplace(row.text(0), row.text(1));
        return true;
    }
    bool readHeaderAlone() { return step("SELECT count(*) FROM \"sqlite_schema\"", &Inspector::skipRow); }
    bool skipRow(const Statement&) { return true; }

    std::optional<StoreInspection> judge() {
        const auto store = metadata_.find("store");
        const auto text = metadata_.find("model");
        if (store == metadata_.end() || text == metadata_.end() || store->second.empty())
            return refuseDamaged("its metadata is incomplete");
        result_.storeIdentifier = store->second;
        if (text->second == model_.text()) {
            // Nobody touched tables or indexes since the library last did.
            if (metadata_["schema"] == std::to_string(header_.schema)) return std::move(result_);
            if (!checkTables(model_) || !findIndexesToMake()) return std::nullopt;
        } else if (!readOtherModel(text->second) || !checkTables(*result_.storedModel)) {
            return std::nullopt;
        }
        return std::move(result_);
    }

    bool readOtherModel(const std::string& text) {
        const auto title = ModelReader::readTitle(text);
        if (title && title->name != model_.name()) {
            refuse(storeForeignError, "belongs to another application (its model is \"" + title->name +
                                          "\"). Move it away, or choose another folder.");
            return false;
        }
        if (title && title->version > model_.version()) {
            refuseNewer();
            return false;
        }
        Error failure;
        result_.storedModel = ModelReader::read(text, "model in the metadata", &failure);
        if (!result_.storedModel) refuseDamaged(failure.localizedDescription());
        return result_.storedModel != nullptr;
    }

    std::nullopt_t refuseMissing(const std::string& table, const std::string& column) {
        return refuseDamaged("the table \"" + table + "\" or its column \"" + column + "\" is missing");
    }

    bool checkTables(const ManagedObjectModel& stored) {
        for (const char* column : {"entity", "last"})
            if (!columnType("_keys", column)) {
                refuseMissing("_keys", column);
                return false;
            }
        return std::ranges::all_of(stored.entities(), [&](const auto& entity) { return checkTable(entity); });
    }

    bool checkTable(const EntityDescription& entity) {
        std::vector<ColumnText> columns = columnsOf(entity);
        columns.push_back({"_id", "INTEGER"});
        for (const ColumnText& column : columns) {
            const auto type = columnType(entity.name, column.name);
            if (!type) {
                refuseMissing(entity.name, column.name);
                return false;
            }
            if (sqlite3_stricmp(std::string(*type).c_str(), column.type.c_str()) != 0) {
                refuseDamaged("the column \"" + column.name + "\" of the table \"" + entity.name +
                              "\" is of type \"" + std::string(*type) + "\" where " + column.type +
                              " is wanted");
                return false;
            }
        }
        return true;
    }

    bool findIndexesToMake() {
        if (!readIndexes()) return false;
        for (const EntityDescription& entity : model_.entities())
            for (IndexText& index : indexesOf(entity)) {
                const auto found = indexes_.find(index.name);
                if (found == indexes_.end() || found->second != index.statement)
                    result_.indexesToMake.push_back(std::move(index));
            }
        return true;
    }

    Database& database_;
    const ManagedObjectModel& model_;
    Error* error_;
    Header header_;
    std::map<std::string, std::string> metadata_;
    std::map<std::string, std::string> indexes_;
    StoreInspection result_;
};

}  // namespace

std::optional<StoreInspection> inspectStore(Database& database, const ManagedObjectModel& model,
                                            Error* error) {
    return Inspector(database, model, error).inspect();
}

}  // namespace orvane::sqlite
