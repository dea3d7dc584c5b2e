#include "persistence/sqlite/schema.h"

#include <glib.h>

namespace orvane::sqlite {

namespace {

std::string list(const std::vector<std::string>& parts, const char* separator) {
    std::string result;
    for (const std::string& part : parts) result += (result.empty() ? "" : separator) + part;
    return result;
}

bool writeMetadata(Database& database, std::string_view name, std::string_view value, Error* error) {
    Statement* statement =
        database.prepared(R"(INSERT OR REPLACE INTO "_metadata" ("name", "value") VALUES (?, ?))", error);
    if (!statement) return false;
    const StatementUse use(*statement);
    use->bind(1, name);
    use->bind(2, value);
    if (use->step() == SQLITE_DONE) return true;
    assignError(error, database.lastError());
    return false;
}

}  // namespace

std::string quoted(std::string_view identifier) {
    std::string result = "\"";
    for (const char c : identifier) {
        if (c == '"') result += c;
        result += c;
    }
    return result + '"';
}

std::string indexName(const EntityDescription& entity, const IndexDescription& index) {
    return entity.name + ":" + list(index.properties, ",");
}

std::string intervalIndexName(const EntityDescription& entity, const IntervalDescription& interval) {
    return entity.name + ":" + interval.start + ">" + interval.end;
}

const char* columnType(AttributeType type) {
    switch (type) {
        case AttributeType::boolean:
        case AttributeType::integer32:
        case AttributeType::integer64:
        case AttributeType::decimal:
            return "INTEGER";
        case AttributeType::real:
        case AttributeType::date:
            return "REAL";
        case AttributeType::text:
            return "TEXT";
        case AttributeType::data:
            return "BLOB";
    }
    return "";
}

std::vector<ColumnText> columnsOf(const EntityDescription& entity) {
    std::vector<ColumnText> result;
    for (const AttributeDescription& attribute : entity.attributes)
        result.push_back({attribute.name, columnType(attribute.type)});
    for (const RelationshipDescription& relationship : entity.relationships)
        if (!relationship.toMany) result.push_back({relationship.name, "INTEGER"});
    return result;
}

std::vector<IndexText> indexesOf(const EntityDescription& entity) {
    std::vector<IndexText> result;
    for (const IndexDescription& index : entity.indexes) {
        std::vector<std::string> columns;
        for (const std::string& property : index.properties) columns.push_back(sqlite::quoted(property));
        const std::string name = indexName(entity, index);
        result.push_back({name, "CREATE INDEX " + sqlite::quoted(name) + " ON " +
                                    sqlite::quoted(entity.name) + " (" + list(columns, ", ") + ")"});
    }
    for (const IntervalDescription& interval : entity.intervals) {
        const std::string name = intervalIndexName(entity, interval);
        const std::string start = sqlite::quoted(interval.start);
        result.push_back({name, "CREATE INDEX " + sqlite::quoted(name) + " ON " +
                                    sqlite::quoted(entity.name) + " (" + start + ") WHERE " +
                                    sqlite::quoted(interval.end) + " < " + start});
    }
    return result;
}

std::string tableStatement(const EntityDescription& entity) {
    std::string result = "CREATE TABLE " + sqlite::quoted(entity.name) + " (\"_id\" INTEGER PRIMARY KEY";
    for (const ColumnText& column : columnsOf(entity))
        result += ", " + sqlite::quoted(column.name) + " " + column.type;
    return result + ") STRICT";
}

bool createSchema(Database& database, const ManagedObjectModel& model, Error* error) {
    std::string statements =
        "PRAGMA application_id = " + std::to_string(applicationId) +
        "; PRAGMA user_version = " + std::to_string(layoutVersion) + ";" +
        R"(CREATE TABLE "_metadata" ("name" TEXT PRIMARY KEY, "value") WITHOUT ROWID;)"
        R"(CREATE TABLE "_keys" ("entity" TEXT PRIMARY KEY, "last" INTEGER) WITHOUT ROWID;)";
    for (const EntityDescription& entity : model.entities()) {
        statements += tableStatement(entity) + ";";
        for (const IndexText& index : indexesOf(entity)) statements += index.statement + ";";
    }
    gchar* identifier = g_uuid_string_random();
    const std::string storeIdentifier(identifier);
    g_free(identifier);
    return database.execute(statements.c_str(), error) &&
           writeMetadata(database, "store", storeIdentifier, error) && recordModel(database, model, error);
}

bool recordModel(Database& database, const ManagedObjectModel& model, Error* error) {
    const auto schema = database.singleValue("PRAGMA schema_version", error);
    return schema && writeMetadata(database, "model", model.text(), error) &&
           writeMetadata(database, "schema", std::to_string(schema->integerValue()), error);
}

}  // namespace orvane::sqlite
