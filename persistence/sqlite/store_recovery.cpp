#include "persistence/store_recovery.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include "persistence/model_reader.h"
#include "persistence/persistence_errors.h"
#include "persistence/sqlite/damaged_schema.h"
#include "persistence/sqlite/private_copy.h"
#include "persistence/sqlite/schema.h"
#include "persistence/sqlite/table_salvage.h"

namespace orvane {

namespace {

using sqlite::Database;
using sqlite::Statement;
using sqlite::StatementUse;

std::nullopt_t refuse(Error* error, PersistenceErrorCode code, const std::filesystem::path& file,
                      const std::string& what) {
    assignError(error, Error(persistenceErrorDomain, code, "The file \"" + file.string() + "\" " + what));
    return std::nullopt;
}

void bindField(Statement& statement, int index, const sqlite::StoredField& field) {
    if (const auto* integer = std::get_if<std::int64_t>(&field))
        statement.bind(index, *integer);
    else if (const auto* real = std::get_if<double>(&field))
        statement.bind(index, *real);
    else if (const auto* text = std::get_if<std::string_view>(&field))
        statement.bind(index, *text);
    else if (const auto* data = std::get_if<sqlite::StoredBytes>(&field))
        sqlite3_bind_blob64(statement.handle(), index, data->bytes.data() ? data->bytes.data() : "",
                            data->bytes.size(), SQLITE_STATIC);
    else
        statement.bindNull(index);
}

/// The new store while it is filled: one transaction.
class NewStore {
  public:
    NewStore(const std::filesystem::path& file, const ManagedObjectModel& model, Error* error)
        : model_(model), error_(error) {
        sqlite::PrepareOptions options;
        options.open.create = true;
        auto prepared = sqlite::prepareStore(file, model, options, error);
        if (!prepared) return;
        database_ = std::move(prepared->database);
        transaction_.emplace(*database_, sqlite::Transaction::Kind::write, error);
        isGood_ = transaction_->begun();
    }

    bool isGood() const { return isGood_; }

    /// The columns of the rows that `insert` is given, key aside.
    void setColumns(std::size_t table, const std::string& entity, const std::vector<std::string>& columns) {
        std::string names = "\"_id\"";
        std::string places = "?";
        for (const std::string& column : columns) {
            names += ", " + sqlite::quoted(column);
            places += ", ?";
        }
        inserts_[table] =
            "INSERT OR IGNORE INTO " + sqlite::quoted(entity) + " (" + names + ") VALUES (" + places + ")";
    }
    /// False when there is a row with that key, when it is below 1 and so was never given out, or when
    /// nothing can be written any more.
    bool insert(std::size_t table, const sqlite::StoredRecord& record,
                const std::vector<std::size_t>& fields) {
        if (record.key < 1) return false;
        Statement* statement = isGood_ ? database_->prepared(inserts_[table], error_) : nullptr;
        isGood_ = statement != nullptr;
        if (!isGood_) return false;
        const StatementUse use(*statement);
        use->bind(1, record.key);
        for (std::size_t i = 0; i < fields.size(); ++i)
            if (fields[i] < record.fields.size())
                bindField(*use, static_cast<int>(i) + 2, record.fields[fields[i]]);
        check(use->step());
        return isGood_ && sqlite3_changes(database_->handle()) > 0;
    }

    /// Keys within the ranges, up to the given one, that no row has.
    std::uint64_t missingKeys(const EntityDescription& entity, const std::vector<sqlite::KeyRange>& ranges,
                              std::int64_t lastKey) {
        std::uint64_t missing = 0;
        for (const sqlite::KeyRange& range : ranges) {
            const std::int64_t low = std::max<std::int64_t>(range.low, 0);  // keys are given out from 1
            const std::int64_t high = std::min(range.high, lastKey);
            if (high <= low) continue;
            const auto rows = database_->singleValue("SELECT count(*) FROM " + sqlite::quoted(entity.name) +
                                                         " WHERE \"_id\" > " + std::to_string(low) +
                                                         " AND \"_id\" <= " + std::to_string(high),
                                                     error_);
            isGood_ = isGood_ && rows;
            if (rows)
                missing +=
                    static_cast<std::uint64_t>(high - low) - static_cast<std::uint64_t>(rows->integerValue());
        }
        return missing;
    }

    /// Makes of values that were never written those that they are read as: booleans that are neither are
    /// true, and a relationship to a key below 1 leads nowhere.
    void settleValues(const EntityDescription& entity) {
        const auto set = [&](const std::string& column, const std::string& value, const std::string& where) {
            const std::string name = sqlite::quoted(column);
            const std::string sql = "UPDATE " + sqlite::quoted(entity.name) + " SET " + name + " = " + value +
                                    " WHERE " + name + where;
            isGood_ = isGood_ && database_->execute(sql.c_str(), error_);
        };
        for (const AttributeDescription& attribute : entity.attributes)
            if (attribute.type == AttributeType::boolean) set(attribute.name, "1", " NOT IN (0, 1)");
        for (const RelationshipDescription& relationship : entity.relationships)
            if (!relationship.toMany) set(relationship.name, "NULL", " < 1");
    }

    /// Rows for the ends of relationships that are lost.
    std::uint64_t addStandIns(const EntityDescription& destination, const RecoveryOptions& options) {
        std::vector<std::int64_t> keys;
        for (const EntityDescription& entity : model_.entities())
            for (const RelationshipDescription& relationship : entity.relationships)
                if (!relationship.toMany && relationship.destination == destination.name)
                    collect("SELECT DISTINCT " + sqlite::quoted(relationship.name) + " FROM " +
                                sqlite::quoted(entity.name) + " WHERE " + sqlite::quoted(relationship.name) +
                                " NOT IN (SELECT \"_id\" FROM " + sqlite::quoted(destination.name) + ")",
                            keys);
        std::uint64_t made = 0;
        for (const std::int64_t key : keys) {
            std::string names = "\"_id\"";
            std::string places = "?";
            std::vector<std::string> texts;
            for (const AttributeDescription& attribute : destination.attributes)
                if (auto text = options.standInText ? options.standInText(destination, attribute.name, key)
                                                    : std::nullopt) {
                    names += ", " + sqlite::quoted(attribute.name);
                    places += ", ?";
                    texts.push_back(std::move(*text));
                }
            Statement* statement =
                isGood_ ? database_->prepared("INSERT OR IGNORE INTO " + sqlite::quoted(destination.name) +
                                                  " (" + names + ") VALUES (" + places + ")",
                                              error_)
                        : nullptr;
            isGood_ = statement != nullptr;
            if (!isGood_) break;
            const StatementUse use(*statement);
            use->bind(1, key);
            for (std::size_t i = 0; i < texts.size(); ++i)
                use->bind(static_cast<int>(i) + 2, std::string_view(texts[i]));
            check(use->step());
            made += static_cast<std::uint64_t>(sqlite3_changes(database_->handle()));
        }
        return made;
    }

    /// The highest key of an entity; 0 for none.
    std::int64_t lastKey(const EntityDescription& entity) {
        const auto last =
            database_->singleValue("SELECT max(\"_id\") FROM " + sqlite::quoted(entity.name), error_);
        isGood_ = isGood_ && last;
        return last ? last->integerValue() : 0;
    }
    void setLastKey(const EntityDescription& entity, std::int64_t last) {
        Statement* statement =
            isGood_ ? database_->prepared(
                          "INSERT OR REPLACE INTO \"_keys\" (\"entity\", \"last\") VALUES (?, ?)", error_)
                    : nullptr;
        isGood_ = statement != nullptr;
        if (!isGood_) return;
        const StatementUse use(*statement);
        use->bind(1, std::string_view(entity.name));
        use->bind(2, last);
        check(use->step());
    }

    bool finish() {
        isGood_ = isGood_ && transaction_->commit(error_);
        transaction_.reset();
        database_.reset();
        return isGood_;
    }

  private:
    void check(int code) {
        if (code == SQLITE_DONE || !isGood_) return;
        isGood_ = false;
        assignError(error_, database_->lastError());
    }
    void collect(const std::string& sql, std::vector<std::int64_t>& keys) {
        Statement* statement = isGood_ ? database_->prepared(sql, error_) : nullptr;
        isGood_ = statement != nullptr;
        if (!isGood_) return;
        const StatementUse use(*statement);
        int code = SQLITE_ROW;
        while ((code = use->step()) == SQLITE_ROW)
            if (!use->isNull(0)) keys.push_back(use->integer(0));
        check(code);
    }

    const ManagedObjectModel& model_;
    Error* error_;
    std::unique_ptr<Database> database_;
    std::optional<sqlite::Transaction> transaction_;
    std::map<std::size_t, std::string> inserts_;
    bool isGood_ = false;
};

/// Puts the finished file in its place, where nothing may stand.
bool takeName(const std::filesystem::path& made, const std::filesystem::path& to, Error* error) {
    int result = ::renameat2(AT_FDCWD, made.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
    // Not every file system can promise it; whether something stood there was asked at the beginning.
    if (result != 0 && (errno == EINVAL || errno == ENOSYS)) result = ::rename(made.c_str(), to.c_str());
    if (result != 0) {
        refuse(error, errno == EEXIST ? storeCannotOpenError : storeInputOutputError, to,
               std::string("cannot be made: ") + std::strerror(errno) + ".");
        return false;
    }
    const int folder = ::open(to.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
    return true;
}

class Recovery {
  public:
    Recovery(const std::filesystem::path& from, const std::filesystem::path& to,
             const ManagedObjectModel& model, const RecoveryOptions& options, Error* error)
        : from_(from), to_(std::filesystem::absolute(to)), model_(&model), options_(options), error_(error) {}

    std::optional<RecoveryReport> run() {
        struct stat status {};
        if (::lstat(to_.c_str(), &status) == 0)
            return refuse(error_, storeCannotOpenError, to_, "exists already. Name another file.");
        advance("Copying", 0, 0);
        const auto copy = sqlite::PrivateCopy::make(from_, to_.parent_path(), error_);
        if (!copy || isInterrupted()) return std::nullopt;
        const sqlite::PageFile pages(copy->file());
        if (pages.pageCount() == 0) return refuse(error_, storeNotDatabaseError, from_, "is empty.");
        const sqlite::DamagedSchema schema(pages, copy->file(), *model_);
        if (!demandOwn(pages, schema)) return std::nullopt;
        if (schema.model()) model_ = schema.model().get();
        report_.schemaLost = schema.isLost();
        report_.unreadableBytes = copy->unreadableBytes();
        report_.missingPages = pages.missingPages();

        const std::filesystem::path made = copy->folder() / "recovered.db";
        if (!fill(made, pages, schema) || isInterrupted()) return std::nullopt;
        return takeName(made, to_, error_) ? std::optional(std::move(report_)) : std::nullopt;
    }

  private:
    bool isInterrupted() const {
        if (!options_.isInterrupted || !options_.isInterrupted()) return false;
        assignError(error_, Error());
        return true;
    }
    void advance(const std::string& phase, std::uint64_t done, std::uint64_t total) const {
        if (options_.advance) options_.advance(phase, done, total);
    }

    /// Another program's database is no damaged store.
    bool demandOwn(const sqlite::PageFile& pages, const sqlite::DamagedSchema& schema) const {
        if (!pages.hasHeader() || schema.isLost()) return true;
        if (pages.headerField(68) == sqlite::applicationId || schema.knowsTables()) return true;
        refuse(error_, storeForeignError, from_, "is a database of another application.");
        return false;
    }

    bool fill(const std::filesystem::path& file, const sqlite::PageFile& pages,
              const sqlite::DamagedSchema& schema) {
        NewStore store(file, *model_, error_);
        if (!store.isGood()) return false;
        const auto& entities = model_->entities();
        std::vector<sqlite::SalvagedTable> tables;
        std::vector<std::vector<std::size_t>> fields;
        for (const EntityDescription& entity : entities) {
            const sqlite::DamagedSchema::Table& table = schema.table(entity);
            std::vector<std::string> columns;
            fields.push_back(sqlite::fieldsOf(table, entity, columns));
            store.setColumns(tables.size(), entity.name, columns);
            tables.push_back(table.salvaged);
        }
        sqlite::TableSalvage salvage(pages, std::move(tables));
        salvage.run(
            [&](std::size_t table, const sqlite::StoredRecord& record) {
                return store.insert(table, record, fields[table]);
            },
            [&](std::uint64_t done, std::uint64_t total) { advance("Reading pages", done, total); });
        if (!store.isGood() || !demandFound(salvage, pages, schema)) return false;
        advance("Saving", 0, 0);
        for (const EntityDescription& entity : entities) store.settleValues(entity);
        for (std::size_t i = 0; i < entities.size(); ++i) {
            const sqlite::SalvageCount& count = salvage.count(i);
            std::int64_t last = std::max(store.lastKey(entities[i]), schema.lastKey(entities[i]));
            const std::uint64_t missing = store.missingKeys(entities[i], salvage.holes(i), last);
            const std::uint64_t standIns = store.addStandIns(entities[i], options_);
            last = std::max(last, store.lastKey(entities[i]));
            store.setLastKey(entities[i], last);
            report_.damagedPages += count.damagedPages;
            report_.entities.push_back({entities[i].name, count.rows, count.looseRows, missing, standIns});
        }
        return store.finish();
    }

    /// A text file, say, has no rows at all.
    bool demandFound(const sqlite::TableSalvage& salvage, const sqlite::PageFile& pages,
                     const sqlite::DamagedSchema& schema) const {
        if (schema.knowsTables()) return true;
        for (std::size_t i = 0; i < model_->entities().size(); ++i)
            if (salvage.count(i).rows > 0) return true;
        if (pages.hasHeader())
            refuse(error_, storeCorruptError, from_, "holds nothing that can be read.");
        else
            refuse(error_, storeNotDatabaseError, from_, "is no database, and holds no part of one.");
        return false;
    }

    const std::filesystem::path& from_;
    const std::filesystem::path to_;
    const ManagedObjectModel* model_;
    const RecoveryOptions& options_;
    Error* error_;
    RecoveryReport report_;
};

}  // namespace

std::optional<RecoveryReport> recoverStore(const std::filesystem::path& from, const std::filesystem::path& to,
                                           const ManagedObjectModel& model, const RecoveryOptions& options,
                                           Error* error) {
    return Recovery(from, to, model, options, error).run();
}

}  // namespace orvane
