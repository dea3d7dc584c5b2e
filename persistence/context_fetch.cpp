#include <stdexcept>
#include <unordered_set>

#include "persistence/context_state.h"
#include "persistence/sqlite/sql_compiler.h"

namespace orvane {

namespace {

using sqlite::CompiledQuery;

/// Which part of a compiled query is meant: its rows proper, or the rare ones told apart by another index.
enum class Branch { ordinary, alternative };

std::string tail(const CompiledQuery& query, Branch branch) {
    const std::string& where = branch == Branch::ordinary ? query.where : query.alternativeWhere;
    std::string result = branch == Branch::alternative ? " " + query.alternativeFrom : std::string();
    result += query.joins;
    if (!where.empty()) result += " WHERE " + where;
    return result;
}

/// Binds the query's own values; returns the next free parameter.
int bindQuery(sqlite::Statement& statement, const CompiledQuery& query) {
    int parameter = 1;
    for (const Value& value : query.bindings) statement.bind(parameter++, value);
    return parameter;
}

/// Several statements that see the file in one state.
class ReadTransaction {
  public:
    explicit ReadTransaction(sqlite::Database& file, bool wanted) : file_(file) {
        if (wanted) open_ = run("BEGIN");
    }
    ~ReadTransaction() {
        if (open_) run("COMMIT");
    }
    ReadTransaction(const ReadTransaction&) = delete;
    ReadTransaction& operator=(const ReadTransaction&) = delete;

  private:
    bool run(std::string_view sql) {
        sqlite::Statement* statement = file_.prepared(sql, nullptr);
        if (!statement) return false;
        const sqlite::StatementUse use(*statement);
        return use->step() == SQLITE_DONE;
    }

    sqlite::Database& file_;
    bool open_ = false;
};

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

void cut(std::vector<Ref<ManagedObject>>& objects, const FetchRequest& request) {
    const std::size_t offset = std::min(request.fetchOffset, objects.size());
    objects.erase(objects.begin(), objects.begin() + static_cast<std::ptrdiff_t>(offset));
    if (request.fetchLimit > 0 && objects.size() > request.fetchLimit) objects.resize(request.fetchLimit);
}

}  // namespace

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
    const bool cutInFile = !judgeInMemory && !pending && (request.fetchLimit > 0 || request.fetchOffset > 0);
    const auto matches = [&](const ManagedObject& object) {
        return !object.isDeleted() && (!request.predicate || request.predicate->evaluate(object));
    };

    std::vector<Ref<ManagedObject>> result;
    std::unordered_set<const ManagedObject*> judged;  // objects with unsaved changes that the file listed
    bool needsSorting = judgeInMemory;
    const auto take = [&](const sqlite::Statement& row) {
        ManagedObject& object = entityTable.findOrCreate(row.integer(0));
        Ref<ManagedObject> held(&object);
        if (pending && object.hasChanges()) {
            judged.insert(&object);
            if (!matches(object)) return;
            needsSorting = true;
        } else if ((object.state() & ManagedObject::stateLoaded) == 0) {
            entityTable.fill(object, row);
        }
        if (!judgeInMemory || matches(object)) result.push_back(std::move(held));
    };

    const ReadTransaction transaction(*file, twoBranches);
    bool alternativeRows = false;
    const auto run = [&](Branch branch) {
        std::string sql = "SELECT " + statements(entity.index).columns + statements(entity.index).fromTable +
                          tail(*query, branch);
        // Few rows come from the alternative; when any do, the two lists are put in order here.
        const bool inFile = branch == Branch::ordinary && !alternativeRows;
        if (inFile && !query->orderBy.empty()) sql += " ORDER BY " + query->orderBy;
        if (inFile && cutInFile) sql += " LIMIT ? OFFSET ?";
        sqlite::Statement* statement = file->prepared(sql, error);
        if (!statement) return false;
        const sqlite::StatementUse use(*statement);
        const int parameter = bindQuery(*use, *query);
        if (inFile && cutInFile) {
            use->bind(parameter, request.fetchLimit > 0 ? static_cast<std::int64_t>(request.fetchLimit) : -1);
            use->bind(parameter + 1, static_cast<std::int64_t>(request.fetchOffset));
        }
        int code;
        while ((code = use->step()) == SQLITE_ROW) take(*use);
        if (code == SQLITE_DONE) return true;
        assignError(error, file->lastError());
        return false;
    };
    if (twoBranches) {
        if (!run(Branch::alternative)) return std::nullopt;
        alternativeRows = !result.empty();
        needsSorting |= alternativeRows;
    }
    if (!run(Branch::ordinary)) return std::nullopt;

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
    if (!cutInFile || alternativeRows) cut(result, request);
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
    for (const Branch branch : {Branch::ordinary, Branch::alternative}) {
        if (branch == Branch::alternative && query->alternativeWhere.empty()) break;
        sqlite::Statement* statement = file->prepared(
            "SELECT count(*)" + statements(entity.index).fromTable + tail(*query, branch), error);
        if (!statement) return std::nullopt;
        const sqlite::StatementUse use(*statement);
        bindQuery(*use, *query);
        if (use->step() != SQLITE_ROW) {
            assignError(error, file->lastError());
            return std::nullopt;
        }
        rows += static_cast<std::size_t>(use->integer(0));
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
    std::string sql =
        "SELECT t0.\"_id\"" + statements(entity.index).fromTable + tail(*query, Branch::ordinary);
    if (!query->orderBy.empty()) sql += " ORDER BY " + query->orderBy;
    sqlite::Statement* statement = file->prepared(sql + " LIMIT ? OFFSET ?", error);
    if (!statement) return std::nullopt;
    const sqlite::StatementUse use(*statement);
    const int parameter = bindQuery(*use, *query);
    use->bind(parameter, request.fetchLimit > 0 ? static_cast<std::int64_t>(request.fetchLimit) : -1);
    use->bind(parameter + 1, static_cast<std::int64_t>(request.fetchOffset));
    int code;
    while ((code = use->step()) == SQLITE_ROW)
        result.emplace_back(&entity, store()->identifier(), use->integer(0));
    if (code == SQLITE_DONE) return result;
    assignError(error, file->lastError());
    return std::nullopt;
}

std::optional<std::vector<Ref<ManagedObject>>> ContextState::fetchAsChild(const FetchRequest& request,
                                                                          Error* error) {
    const EntityDescription& entity = entityNamed(request.entityName);
    EntityTable& entityTable = table(entity);
    sqlite::Database* file = database(error);
    if (!file) return std::nullopt;

    // The file is read in pieces, so that the parent, which saves on another thread, never waits long for the
    // read lock. Rows that the parent saves meanwhile are noted and judged again at the end.
    constexpr std::int64_t pieceRows = 1024;
    std::optional<CompiledQuery> query = compile(request, entity);
    if (query && !query->otherEntities.empty()) query.reset();
    const bool judgeInMemory = !query;
    if (!query) query.emplace();
    const ParentChanges::Reader reader(*fromParent_);
    std::vector<Ref<ManagedObject>> result;
    std::unordered_set<std::int64_t> again;
    const auto take = [&](const sqlite::Statement& row) {
        ManagedObject& object = entityTable.findOrCreate(row.integer(0));
        Ref<ManagedObject> held(&object);
        if ((object.state() & ManagedObject::stateLoaded) == 0) entityTable.fill(object, row);
        result.push_back(std::move(held));
    };
    const std::string select = "SELECT " + statements(entity.index).columns;
    const auto readPieces = [&](Branch branch) {
        const bool byKey = branch == Branch::alternative || query->pieceColumn.empty();
        const std::string key = "t0.\"_id\"";
        const std::string place = byKey ? key : "t0." + sqlite::quoted(query->pieceColumn);
        const std::string order = byKey ? key : place + ", " + key;
        const std::string from = (byKey ? std::string() : ", " + place) + statements(entity.index).fromTable;
        const std::string body = tail(*query, branch);
        const std::string further =
            std::string(body.find(" WHERE ") == std::string::npos ? " WHERE " : " AND ") +
            (byKey ? key + " > ?" : "(" + order + ") > (?, ?)");
        const int placeColumn = static_cast<int>(entityTable.columns().size()) + 1;
        std::int64_t lastKey = 0;
        double lastPlace = 0;
        for (bool first = true;; first = false) {
            sqlite::Statement* statement = file->prepared(
                select + from + body + (first ? "" : further) + " ORDER BY " + order + " LIMIT ?", error);
            if (!statement) return false;
            const sqlite::StatementUse use(*statement);
            int parameter = bindQuery(*use, *query);
            if (!first && !byKey) use->bind(parameter++, lastPlace);
            if (!first) use->bind(parameter++, lastKey);
            use->bind(parameter, pieceRows);
            std::int64_t rows = 0;
            int code;
            {
                // Wait for a save that is being committed: the lock on the file is then free.
                const std::lock_guard lock(fromParent_->mutex);
                code = use->step();
            }
            for (; code == SQLITE_ROW; code = use->step()) {
                take(*use);
                lastKey = use->integer(0);
                if (!byKey) lastPlace = use->real(placeColumn);
                ++rows;
            }
            if (code != SQLITE_DONE) {
                assignError(error, file->lastError());
                return false;
            }
            if (rows < pieceRows) return true;
        }
    };
    if (!query->alternativeWhere.empty() && !readPieces(Branch::alternative)) return std::nullopt;
    if (!readPieces(Branch::ordinary)) return std::nullopt;

    // Judged in memory: rows of which the parent holds or meanwhile saved changes, and this context's own
    // changes.
    std::vector<std::int64_t> candidates;
    {
        const std::lock_guard lock(fromParent_->mutex);
        for (const auto& [key, snapshot] : fromParent_->unsaved[entity.index])
            if (again.insert(key).second) candidates.push_back(key);
        for (const std::int64_t key : fromParent_->savedSince(reader, entity.index))
            if (again.insert(key).second) candidates.push_back(key);
    }
    for (const Ref<ManagedObject>& object : listed_)
        if (&object->entity() == &entity && object->hasChanges() && again.insert(object->key_).second)
            candidates.push_back(object->key_);
    std::sort(candidates.begin(), candidates.end(), [](std::int64_t left, std::int64_t right) {
        // Rows by key, then new objects in the order of their insertion (temporary keys count downwards).
        return (left > 0) != (right > 0) ? left > 0 : (left > 0 ? left < right : left > right);
    });
    const auto matches = [&](const ManagedObject& object) {
        return !object.isDeleted() && (!request.predicate || request.predicate->evaluate(object));
    };
    if (!again.empty())
        std::erase_if(result, [&](const auto& object) { return again.contains(object->key_); });
    if (judgeInMemory) std::erase_if(result, [&](const auto& object) { return !matches(*object); });
    for (const std::int64_t key : candidates) {
        const Ref<ManagedObject> object(&entityTable.findOrCreate(key));
        if (!object->hasChanges()) {
            turnIntoFault(*object);
            if (!fire(*object)) continue;
        }
        if (matches(*object)) result.push_back(object);
    }
    sortUsing(result, request.sortOrders);
    cut(result, request);
    return result;
}

}  // namespace orvane
