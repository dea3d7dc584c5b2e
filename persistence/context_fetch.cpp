#include <stdexcept>
#include <unordered_set>

#include "persistence/context_state.h"
#include "persistence/query_run.h"
#include "persistence/text_batch.h"

namespace orvane {

using sqlite::CompiledQuery;

namespace {

/// Lets several statements see the file in one state, unless a transaction stands already.
class ReadTransaction {
  public:
    ReadTransaction(sqlite::Database& file, bool wanted) {
        if (wanted && sqlite3_get_autocommit(file.handle()) != 0)
            transaction_.emplace(file, sqlite::Transaction::Kind::read, nullptr);
    }

  private:
    std::optional<sqlite::Transaction> transaction_;
};

/// What LIMIT and OFFSET take.
std::vector<Value> limits(const FetchRequest& request) {
    const auto limit = static_cast<std::int64_t>(request.fetchLimit);
    return {Value(limit > 0 ? limit : -1), Value(static_cast<std::int64_t>(request.fetchOffset))};
}

/// The keys of a query's answer, which has one branch.
std::string keySelect(const CompiledQuery& query, const sqlite::EntityStatements& texts) {
    std::string sql = "SELECT t0.\"_id\"" + texts.fromTable + tail(query, QueryBranch::ordinary);
    if (!query.orderBy.empty()) sql += " ORDER BY " + query.orderBy;
    return sql;
}

void demandKey(const EntityTable& table, std::string_view keyPath) {
    const std::string_view key = keyPath.substr(0, keyPath.find('.'));
    if (!key.starts_with('@') && !table.keys().find(key))
        throw UnknownKeyError(table.keys().className(), key);
}

/// What the file cannot decide is asked of each object. A key that no object has is refused even when there
/// is none.
void demandKeys(const EntityTable& table, const PredicateNode& node) {
    for (const PredicateOperand* operand : {&node.left, &node.right})
        if (operand->kind == PredicateOperand::Kind::keyPath) demandKey(table, operand->keyPath);
    for (const PredicateNode& child : node.children) demandKeys(table, child);
}

}  // namespace

void cutToLimits(std::vector<Ref<ManagedObject>>& objects, const FetchRequest& request) {
    const std::size_t offset = std::min(request.fetchOffset, objects.size());
    objects.erase(objects.begin(), objects.begin() + static_cast<std::ptrdiff_t>(offset));
    if (request.fetchLimit > 0 && objects.size() > request.fetchLimit) objects.resize(request.fetchLimit);
}

std::optional<CompiledQuery> ContextState::compile(const FetchRequest& request,
                                                   const EntityDescription& entity) {
    auto query =
        sqlite::compileQuery(coordinator_->model(), entity,
                             request.predicate ? &request.predicate->root() : nullptr, request.sortOrders);
    // Rows joined from other entities are judged by the file, which does not know their unsaved changes.
    if (query) {
        for (const EntityDescription* other : query->otherEntities)
            if (hasPendingChanges(other->index)) return std::nullopt;
        return query;
    }
    if (request.predicate) demandKeys(table(entity), request.predicate->root());
    for (const SortOrder& order : request.sortOrders) demandKey(table(entity), order.keyPath);
    return std::nullopt;
}

std::optional<std::vector<Ref<ManagedObject>>> ContextState::fetch(const FetchRequest& request,
                                                                   Error* error) {
    checkThread();
    if (fromParent_) return fetchAsChild(request, error);
    absorbInbox();
    const EntityDescription& entity = entityNamed(request.entityName);
    EntityTable& entityTable = table(entity);
    sqlite::Database* file = database(error);
    if (!file) return std::nullopt;

    std::optional<CompiledQuery> query = compile(request, entity);
    const bool judgeInMemory = !query;
    if (!query) query.emplace();
    const bool pending = hasPendingChanges(entity.index);
    const bool twoBranches = !query->alternativeWhere.empty();
    if (!judgeInMemory && !pending && !twoBranches && mostAreAlive(entityTable, *file))
        return fetchAlive(request, *query, entityTable, *file, error);
    const bool cutInFile = !judgeInMemory && !pending && (request.fetchLimit > 0 || request.fetchOffset > 0);
    const auto matches = [&](const ManagedObject& object) {
        return !object.isDeleted() && (!request.predicate || request.predicate->evaluate(object));
    };

    const RowPart part = rowPart(request, judgeInMemory);
    std::vector<Ref<ManagedObject>> result;
    std::unordered_set<const ManagedObject*> judged;  // objects with unsaved changes that the file listed
    bool needsSorting = judgeInMemory;
    const auto take = [&](const sqlite::Statement& row, TextBatch& texts) {
        ManagedObject& object = entityTable.findOrCreate(row.integer(0));
        Ref<ManagedObject> held(&object);
        const bool judgedHere = judgeInMemory || (pending && object.hasChanges());
        if (pending && object.hasChanges()) {
            judged.insert(&object);
            needsSorting = true;
        } else if (!EntityTable::isFilled(object, part)) {
            entityTable.fill(object, row, part, texts);
        }
        if (judgedHere) {
            texts.settle();
            if (!matches(object)) return;
        }
        result.push_back(std::move(held));
    };

    const ReadTransaction transaction(*file, twoBranches);
    bool alternativeRows = false;
    const auto run = [&](QueryBranch branch) {
        std::string sql = columnSelect(entity.index, part) + tail(*query, branch);
        // Few rows come from the alternative; when any do, the two lists are put in order here.
        const bool inFile = branch == QueryBranch::ordinary && !alternativeRows;
        std::vector<Value> further;
        if (inFile && !query->orderBy.empty()) sql += " ORDER BY " + query->orderBy;
        if (inFile && cutInFile) {
            sql += " LIMIT ? OFFSET ?";
            further = limits(request);
        }
        TextBatch texts(storage_->texts());
        return runQuery(*file, sql, *query, further, error,
                        [&](const sqlite::Statement& row) { take(row, texts); });
    };
    if (twoBranches) {
        if (!run(QueryBranch::alternative)) return std::nullopt;
        alternativeRows = !result.empty();
        needsSorting |= alternativeRows;
    }
    if (!run(QueryBranch::ordinary)) return std::nullopt;

    if (pending) {
        for (const Ref<ManagedObject>& object : listed_) {
            if (&object->entity() != &entity || !object->hasChanges() || judged.contains(object.get()))
                continue;
            if (!matches(*object)) continue;
            result.push_back(object);
            needsSorting = true;
        }
    }
    if (needsSorting) sortUsing(result, request.sortOrders);
    if (!cutInFile || alternativeRows) cutToLimits(result, request);
    return result;
}

std::string ContextState::columnSelect(std::size_t entityIndex, RowPart part) {
    const sqlite::EntityStatements& texts = statements(entityIndex);
    return "SELECT " + (part == RowPart::all ? texts.columns : texts.columnsWithoutTexts) + texts.fromTable;
}

bool ContextState::mostAreAlive(const EntityTable& entityTable, sqlite::Database& file) const {
    constexpr std::size_t worthAsking = 1024;
    const std::size_t known = entityTable.directory().size();
    if (known < worthAsking) return false;
    // Keys are dense, so the last one tells about how many rows there are.
    const auto lastKey =
        file.singleValue("SELECT max(\"_id\") FROM " + sqlite::quoted(entityTable.entity().name), nullptr);
    return lastKey && static_cast<std::int64_t>(known) > lastKey->integerValue() / 2;
}

std::optional<std::vector<Ref<ManagedObject>>> ContextState::fetchAlive(const FetchRequest& request,
                                                                        const CompiledQuery& query,
                                                                        EntityTable& entityTable,
                                                                        sqlite::Database& file,
                                                                        Error* error) {
    const ReadTransaction transaction(file, true);
    std::string sql = keySelect(query, statements(entityTable.entity().index));
    // An index that holds all that is asked for is not in the order of the table.
    if (query.where.empty() && query.orderBy.empty()) sql += " ORDER BY t0.\"_id\"";
    std::vector<Ref<ManagedObject>> result;
    if (!runQuery(file, sql + " LIMIT ? OFFSET ?", query, limits(request), error,
                  [&](const sqlite::Statement& row) {
                      result.emplace_back(&entityTable.findOrCreate(row.integer(0)));
                  }))
        return std::nullopt;
    for (const Ref<ManagedObject>& object : result)
        if (!EntityTable::isFilled(*object, rowPart(request, false)) && !fillFromFile(*object, error))
            return std::nullopt;
    return result;
}

std::optional<std::size_t> ContextState::count(const FetchRequest& request, Error* error) {
    const EntityDescription& entity = entityNamed(request.entityName);
    const std::optional<CompiledQuery> query = fromParent_ ? std::nullopt : compile(request, entity);
    sqlite::Database* file = query && !hasPendingChanges(entity.index) ? database(error) : nullptr;
    if (!file) {
        const auto objects = fetch(request, error);
        return objects ? std::optional(objects->size()) : std::nullopt;
    }
    const ReadTransaction transaction(*file, !query->alternativeWhere.empty());
    std::size_t rows = 0;
    for (const QueryBranch branch : {QueryBranch::ordinary, QueryBranch::alternative}) {
        if (branch == QueryBranch::alternative && query->alternativeWhere.empty()) break;
        const std::string sql = "SELECT count(*)" + statements(entity.index).fromTable + tail(*query, branch);
        if (!runQuery(*file, sql, *query, {}, error, [&](const sqlite::Statement& row) {
                rows += static_cast<std::size_t>(row.integer(0));
            }))
            return std::nullopt;
    }
    rows -= std::min(rows, request.fetchOffset);
    return request.fetchLimit > 0 ? std::min(rows, request.fetchLimit) : rows;
}

std::optional<std::vector<ManagedObjectID>> ContextState::identifiers(const FetchRequest& request,
                                                                      Error* error) {
    const EntityDescription& entity = entityNamed(request.entityName);
    const std::optional<CompiledQuery> query = fromParent_ ? std::nullopt : compile(request, entity);
    const bool direct = query && query->alternativeWhere.empty() && !hasPendingChanges(entity.index);
    sqlite::Database* file = direct ? database(error) : nullptr;
    std::vector<ManagedObjectID> result;
    if (!file) {
        const auto objects = fetch(request, error);
        if (!objects) return std::nullopt;
        for (const Ref<ManagedObject>& object : *objects) result.push_back(identifierOf(*object));
        return result;
    }
    const std::string sql = keySelect(*query, statements(entity.index));
    if (!runQuery(*file, sql + " LIMIT ? OFFSET ?", *query, limits(request), error,
                  [&](const sqlite::Statement& row) {
                      result.emplace_back(&entity, store()->identifier(), row.integer(0));
                  }))
        return std::nullopt;
    return result;
}

}  // namespace orvane
