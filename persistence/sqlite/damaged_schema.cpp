#include "persistence/sqlite/damaged_schema.h"

#include <algorithm>
#include <map>

#include "persistence/model_reader.h"
#include "persistence/sqlite/schema.h"

namespace orvane::sqlite {

namespace {

StoredKind kindOf(std::string_view type) {
    if (type == "INTEGER" || type == "INT") return StoredKind::integer;
    if (type == "REAL") return StoredKind::real;
    return type == "TEXT" ? StoredKind::text : StoredKind::data;
}

DamagedSchema::Table tableOf(const EntityDescription& entity) {
    DamagedSchema::Table table;
    table.salvaged.name = entity.name;
    for (const ColumnText& column : columnsOf(entity)) {
        table.columns.push_back(column.name);
        table.salvaged.columns.push_back(kindOf(column.type));
    }
    return table;
}

/// Lets a statement from the file make a table in memory, and do nothing else.
int allowTableAlone(void*, int action, const char*, const char*, const char*, const char*) {
    switch (action) {
        case SQLITE_CREATE_TABLE:
        case SQLITE_INSERT:
        case SQLITE_UPDATE:
        case SQLITE_READ:
        case SQLITE_SELECT:
            return SQLITE_OK;
        default:
            return SQLITE_DENY;
    }
}

/// The columns that a stored statement declares, after the key; none when it is not as the library writes
/// them.
std::optional<DamagedSchema::Table> declaredTable(const std::string& statement) {
    sqlite3* handle = nullptr;
    if (sqlite3_open_v2(":memory:", &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_MEMORY, nullptr) !=
        SQLITE_OK) {
        sqlite3_close(handle);
        return std::nullopt;
    }
    sqlite3_set_authorizer(handle, allowTableAlone, nullptr);
    std::optional<DamagedSchema::Table> table;
    {
        sqlite3_stmt* create = nullptr;
        sqlite3_prepare_v2(handle, statement.c_str(), static_cast<int>(statement.size()), &create, nullptr);
        Statement made(create);
        const bool done = made && made.step() == SQLITE_DONE;
        sqlite3_set_authorizer(handle, nullptr, nullptr);
        sqlite3_stmt* select = nullptr;
        if (done)
            sqlite3_prepare_v2(handle,
                               R"(SELECT c."name", c."type", c."pk" FROM "sqlite_schema" AS s,
                                  pragma_table_info(s."name") AS c WHERE s."type" = 'table')",
                               -1, &select, nullptr);
        Statement columns(select);
        while (columns && columns.step() == SQLITE_ROW) {
            const bool isKey = columns.integer(2) != 0;
            if (!table && !isKey) break;
            if (isKey && table) {
                table.reset();
                break;
            }
            if (!table) {
                table.emplace();
                continue;
            }
            table->columns.emplace_back(columns.text(0));
            table->salvaged.columns.push_back(kindOf(columns.text(1)));
        }
    }
    sqlite3_close(handle);
    return table;
}

}  // namespace

DamagedSchema::DamagedSchema(const PageFile& pages, const std::filesystem::path& copy,
                             const ManagedObjectModel& model)
    : lastKeys_(model.entities().size()) {
    ask(copy, model);
    const ManagedObjectModel& stored = model_ ? *model_ : model;
    for (const EntityDescription& entity : stored.entities()) tables_.push_back(tableOf(entity));
    if (pages.hasHeader()) readTables(pages, stored);
}

/// What SQLite itself can still tell is only good to have.
void DamagedSchema::ask(const std::filesystem::path& copy, const ManagedObjectModel& model) {
    OpenOptions options;
    options.readOnly = true;
    const auto database = Database::open(copy, options, nullptr);
    if (!database) return;
    sqlite3_db_config(database->handle(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    database->execute("PRAGMA writable_schema = ON", nullptr);
    const auto text =
        database->singleValue(R"(SELECT "value" FROM "_metadata" WHERE "name" = 'model')", nullptr);
    if (const std::string* json = text ? text->asString() : nullptr; json && *json != model.text()) {
        auto stored = ModelReader::read(*json, "metadata", nullptr);
        if (stored && stored->name() == model.name() && stored->version() < model.version())
            model_ = std::move(stored);
    }
    const auto& entities = (model_ ? *model_ : model).entities();
    lastKeys_.resize(entities.size());
    for (const EntityDescription& entity : entities) {
        const auto last = database->singleValue(
            "SELECT \"last\" FROM \"_keys\" WHERE \"entity\" = '" + entity.name + "'", nullptr);
        // Keys count up one by one, so one that is far beyond all rows is damage.
        constexpr std::int64_t farthest = std::int64_t{1} << 40;
        if (last && last->integerValue() > 0 && last->integerValue() < farthest)
            lastKeys_[entity.index] = last->integerValue();
    }
}

void DamagedSchema::readTables(const PageFile& pages, const ManagedObjectModel& model) {
    // The rows of the schema have no key column of their own, so they are asked for as they are.
    const auto take = [&](const StoredRecord& record) {
        if (record.fields.size() != 5) return;
        const auto* type = std::get_if<std::string_view>(&record.fields[0]);
        const auto* name = std::get_if<std::string_view>(&record.fields[1]);
        const auto* root = std::get_if<std::int64_t>(&record.fields[3]);
        const auto* statement = std::get_if<std::string_view>(&record.fields[4]);
        if (!type || !name || !root || !statement) return;
        isLost_ = false;
        if (*type != "table" || *root < 2 || *root > pages.pageCount()) return;
        for (const EntityDescription& entity : model.entities()) {
            if (entity.name != *name) continue;
            Table& table = tables_[entity.index];
            if (const std::string text(*statement); text != tableStatement(entity))
                if (auto declared = declaredTable(text)) table = std::move(*declared);
            table.salvaged.name = entity.name;
            table.salvaged.root = static_cast<std::uint32_t>(*root);
            knowsTables_ = true;
        }
    };
    std::vector<std::uint32_t> open{1};
    std::vector<bool> seen(std::size_t{pages.pageCount()} + 1);
    StoredRecord record;
    std::string payload;
    while (!open.empty()) {
        const std::uint32_t number = open.back();
        open.pop_back();
        if (number == 0 || number > pages.pageCount() || seen[number]) continue;
        seen[number] = true;
        const TreePage page(pages, number);
        for (std::size_t i = 0; i < page.cellCount(); ++i) {
            TreePage::Child child;
            if (page.kind() == TreePage::Kind::leaf && page.readRecord(i, record, payload)) take(record);
            if (page.kind() == TreePage::Kind::interior && page.readChild(i, child))
                open.push_back(child.page);
        }
        if (page.kind() == TreePage::Kind::interior) open.push_back(page.lastChild());
    }
}

std::vector<std::size_t> fieldsOf(const DamagedSchema::Table& table, const EntityDescription& entity,
                                  std::vector<std::string>& columns) {
    std::vector<std::size_t> result;
    for (const ColumnText& wanted : columnsOf(entity)) {
        const auto found = std::find(table.columns.begin(), table.columns.end(), wanted.name);
        if (found == table.columns.end()) continue;
        const auto index = static_cast<std::size_t>(found - table.columns.begin());
        if (table.salvaged.columns[index] != kindOf(wanted.type)) continue;
        columns.push_back(wanted.name);
        result.push_back(index + 1);  // behind the key
    }
    return result;
}

}  // namespace orvane::sqlite
