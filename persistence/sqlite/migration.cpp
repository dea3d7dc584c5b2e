#include "persistence/sqlite/migration.h"

#include <algorithm>
#include <set>

#include "persistence/model_comparison.h"
#include "persistence/persistence_errors.h"
#include "persistence/sqlite/schema.h"

namespace orvane::sqlite {

namespace {

using Kind = ModelChange::Kind;

std::string nameOfPlace(const ModelChange& change) {
    const EntityDescription* entity = change.newEntity ? change.newEntity : change.oldEntity;
    std::string result = "\"" + entity->name;
    if (change.newAttribute) return result + "." + change.newAttribute->name + "\"";
    if (change.newRelationship) return result + "." + change.newRelationship->name + "\"";
    return result + "\"";
}

/// Names between quotation marks for values; entities' names hold no such mark themselves.
std::string literal(const std::string& name) { return "'" + name + "'"; }

class Migration {
  public:
    Migration(Database& database, const ManagedObjectModel& oldModel, const ManagedObjectModel& newModel)
        : database_(database),
          oldModel_(oldModel),
          newModel_(newModel),
          changes_(compareModels(oldModel, newModel)) {}

    bool run(Error* error) {
        for (const ModelChange& change : changes_)
            if (const std::string obstacle = obstacleTo(change); !obstacle.empty()) {
                assignError(error, impossible(nameOfPlace(change) + ": " + obstacle));
                return false;
            }
        // Under the old names first, then the new names, then what is made under them.
        if (dropOldIndexes() && dropColumnsAndTables() && renameColumns() && renameTables() &&
            addTablesAndColumns() && convertValues() && makeNewIndexes() &&
            recordModel(database_, newModel_, &failure_))
            return true;
        // What SQL itself objects to stands in the file: a view on a column that goes, a table of a name that
        // comes.
        assignError(error, failure_.code() == storeOtherError ? impossible(failure_.localizedFailureReason())
                                                              : failure_);
        return false;
    }

  private:
    Error impossible(const std::string& why) const {
        return Error(
            persistenceErrorDomain, migrationImpossibleError,
            {{NSLocalizedDescriptionKey, "The database \"" + database_.file().string() +
                                             "\" was written by an older version of this application and "
                                             "cannot be brought up to date. It was left as it is."},
             {NSLocalizedFailureReasonErrorKey, why}});
    }

    bool execute(const std::string& statement) { return database_.execute(statement.c_str(), &failure_); }
    bool alter(const std::string& table, const std::string& what) {
        return execute("ALTER TABLE " + sqlite::quoted(table) + " " + what);
    }

    /// Applies `action` to each change of the kind until one fails.
    template <class Action>
    bool forEach(Kind kind, const Action& action) {
        return std::ranges::all_of(
            changes_, [&](const ModelChange& change) { return change.kind != kind || action(change); });
    }

    bool changesColumns(const EntityDescription& oldEntity) const {
        return std::ranges::any_of(changes_, [&](const ModelChange& change) {
            return change.oldEntity == &oldEntity && change.kind != Kind::attributeAdded &&
                   change.kind != Kind::relationshipAdded;
        });
    }

    /// Indexes stand in the way of columns that go and would keep names made of the old ones. Those over what
    /// stays as it is are kept: on a large file they are the longest part.
    bool dropOldIndexes() {
        std::set<std::string> wanted;
        for (const EntityDescription& entity : newModel_.entities())
            for (const IndexText& index : indexesOf(entity)) wanted.insert(index.statement);
        for (const EntityDescription& entity : oldModel_.entities())
            for (const IndexText& index : indexesOf(entity))
                if ((changesColumns(entity) || !wanted.contains(index.statement)) &&
                    !execute("DROP INDEX IF EXISTS " + sqlite::quoted(index.name)))
                    return false;
        return true;
    }

    bool dropColumnsAndTables() {
        const auto dropRelationship = [&](const ModelChange& change) {
            return change.oldRelationship->toMany ||
                   alter(change.oldEntity->name,
                         "DROP COLUMN " + sqlite::quoted(change.oldRelationship->name));
        };
        return forEach(Kind::attributeRemoved,
                       [&](const ModelChange& change) {
                           return alter(change.oldEntity->name,
                                        "DROP COLUMN " + sqlite::quoted(change.oldAttribute->name));
                       }) &&
               forEach(Kind::relationshipRemoved, dropRelationship) &&
               // The other end, which was and stays to-one, holds the same pairs.
               forEach(Kind::relationshipBecameToMany, dropRelationship) &&
               // The keys it gave out stay on record: should the entity come back, they are still not given
               // out again.
               forEach(Kind::entityRemoved, [&](const ModelChange& change) {
                   return execute("DROP TABLE " + sqlite::quoted(change.oldEntity->name));
               });
    }

    struct Renaming {
        const EntityDescription* entity;
        std::string from;
        std::string to;
    };

    /// All away from their old names before any takes its new one: two may have changed names with each
    /// other.
    template <class Rename>
    static bool renameAll(const std::vector<Renaming>& renamings, const Rename& rename) {
        const auto between = [](std::size_t i) { return "~" + std::to_string(i); };
        for (std::size_t i = 0; i < renamings.size(); ++i)
            if (!rename(renamings[i], renamings[i].from, between(i))) return false;
        for (std::size_t i = 0; i < renamings.size(); ++i)
            if (!rename(renamings[i], between(i), renamings[i].to)) return false;
        return true;
    }

    bool renameColumns() {
        std::vector<Renaming> renamings;
        for (const ModelChange& change : changes_) {
            if (change.kind == Kind::attributeRenamed)
                renamings.push_back({change.oldEntity, change.oldAttribute->name, change.newAttribute->name});
            if (change.kind == Kind::relationshipRenamed && !change.oldRelationship->toMany &&
                !change.newRelationship->toMany)
                renamings.push_back(
                    {change.oldEntity, change.oldRelationship->name, change.newRelationship->name});
        }
        return renameAll(
            renamings, [&](const Renaming& renaming, const std::string& from, const std::string& to) {
                return alter(renaming.entity->name,
                             "RENAME COLUMN " + sqlite::quoted(from) + " TO " + sqlite::quoted(to));
            });
    }

    bool renameTables() {
        std::vector<Renaming> renamings;
        for (const ModelChange& change : changes_)
            if (change.kind == Kind::entityRenamed)
                renamings.push_back({change.oldEntity, change.oldEntity->name, change.newEntity->name});
        return renameAll(renamings, [&](const Renaming&, const std::string& from, const std::string& to) {
            // An entity of the new name may have been removed long ago: its keys count too.
            return alter(from, "RENAME TO " + sqlite::quoted(to)) &&
                   execute(R"(INSERT OR REPLACE INTO "_keys" SELECT )" + literal(to) +
                           R"(, max("last") FROM "_keys" WHERE "entity" IN ()" + literal(from) + ", " +
                           literal(to) + R"() HAVING count(*) > 0; DELETE FROM "_keys" WHERE "entity" = )" +
                           literal(from));
        });
    }

    bool addTablesAndColumns() {
        return forEach(
                   Kind::entityAdded,
                   [&](const ModelChange& change) { return execute(tableStatement(*change.newEntity)); }) &&
               forEach(Kind::attributeAdded,
                       [&](const ModelChange& change) {
                           const AttributeDescription& added = *change.newAttribute;
                           return addColumn(*change.newEntity, added.name, columnType(added.type)) &&
                                  (added.optional || fillAbsent(*change.newEntity, added));
                       }) &&
               forEach(Kind::relationshipAdded, [&](const ModelChange& change) {
                   return change.newRelationship->toMany ||
                          addColumn(*change.newEntity, change.newRelationship->name, "INTEGER");
               });
    }

    bool addColumn(const EntityDescription& entity, const std::string& name, const std::string& type) {
        return alter(entity.name, "ADD COLUMN " + sqlite::quoted(name) + " " + type);
    }

    bool convertValues() {
        return forEach(Kind::attributeRetyped,
                       [&](const ModelChange& change) {
                           return widen(*change.newEntity, *change.newAttribute);
                       }) &&
               forEach(Kind::attributeBecameRequired, [&](const ModelChange& change) {
                   return fillAbsent(*change.newEntity, *change.newAttribute);
               });
    }

    /// From a boolean or an integer; see `isWidening`.
    bool widen(const EntityDescription& entity, const AttributeDescription& attribute) {
        const std::string table = sqlite::quoted(entity.name);
        const std::string column = sqlite::quoted(attribute.name);
        if (attribute.type == AttributeType::decimal)
            return execute("UPDATE " + table + " SET " + column + " = " + column + " * 1000000");
        if (attribute.type != AttributeType::real) return true;
        return addColumn(entity, "~", "REAL") && execute("UPDATE " + table + R"( SET "~" = )" + column) &&
               alter(entity.name, "DROP COLUMN " + column) &&
               alter(entity.name, R"(RENAME COLUMN "~" TO )" + column);
    }

    bool fillAbsent(const EntityDescription& entity, const AttributeDescription& attribute) {
        const std::string column = sqlite::quoted(attribute.name);
        Statement* statement = database_.prepared(
            "UPDATE " + sqlite::quoted(entity.name) + " SET " + column + " = ? WHERE " + column + " IS NULL",
            &failure_);
        if (!statement) return false;
        const StatementUse use(*statement);
        use->bind(1, attribute.defaultValue);
        if (use->step() == SQLITE_DONE) return true;
        failure_ = database_.lastError();
        return false;
    }

    bool makeNewIndexes() {
        for (const EntityDescription& entity : newModel_.entities())
            for (const IndexText& index : indexesOf(entity)) {
                const auto present = database_.singleValue(
                    R"(SELECT "sql" FROM "sqlite_schema" WHERE "type" = 'index' AND "name" = )" +
                        literal(index.name),
                    &failure_);
                if (!present) return false;
                if (*present == Value(index.statement)) continue;
                if (!execute("DROP INDEX IF EXISTS " + sqlite::quoted(index.name)) ||
                    !execute(index.statement))
                    return false;
            }
        return true;
    }

    Database& database_;
    const ManagedObjectModel& oldModel_;
    const ManagedObjectModel& newModel_;
    std::vector<ModelChange> changes_;
    Error failure_;
};

}  // namespace

bool migrate(Database& database, const ManagedObjectModel& oldModel, const ManagedObjectModel& newModel,
             Error* error) {
    return Migration(database, oldModel, newModel).run(error);
}

}  // namespace orvane::sqlite
