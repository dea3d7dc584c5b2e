#include <algorithm>

#include "persistence/context_state.h"
#include "persistence/sqlite/sql_compiler.h"

namespace orvane {

namespace {

/// More objects with unsaved changes than this are better added up in memory.
constexpr std::size_t mostExclusions = 64;

/// What is asked of the rows: an SQL expression, whether one row at the end of an index answers it, and how
/// the answer becomes a value.
struct AggregateQuery {
    std::string expression;
    std::string extremeOf;  ///< quoted column of which the largest or smallest value is asked
    SlotKind kind = SlotKind::integer64;
};

Value valueOfColumn(const sqlite::Statement& row, SlotKind kind) {
    if (row.isNull(0)) return {};
    switch (kind) {
        case SlotKind::boolean:
            return row.integer(0) != 0;
        case SlotKind::decimal:
            return DecimalSeconds(row.integer(0));
        case SlotKind::date:
            return dateFromSecondsSinceEpoch(row.real(0));
        case SlotKind::real:
            return row.real(0);
        case SlotKind::text:
            return row.text(0);
        default:
            return row.integer(0);
    }
}

std::optional<AggregateQuery> queryFor(const EntityTable& members, std::string_view operation,
                                       std::string_view rest) {
    const EntityDescription& entity = members.entity();
    if (operation == "count") return AggregateQuery{"count(*)", {}, SlotKind::integer64};
    if (operation == "sum" && members.objectClass()) {
        for (const DerivedSeconds& derived : members.objectClass()->derived) {
            if (derived.key != rest) continue;
            std::string arguments;
            for (const std::string_view input : derived.inputs)
                arguments += (arguments.empty() ? "" : ", ") + sqlite::quoted(input);
            return AggregateQuery{sqlite::quoted(sqlite::sumFunction(entity, rest)) + "(" + arguments + ")",
                                  {},
                                  SlotKind::decimal};
        }
    }
    if (!entity.attribute(rest)) return std::nullopt;
    const SlotKind kind = members.slots()[*entity.propertyIndex(rest)].kind;
    const std::string column = sqlite::quoted(rest);
    if (operation == "sum" && kind == SlotKind::decimal)
        return AggregateQuery{"coalesce(sum(" + column + "), 0)", {}, kind};
    if ((operation == "max" || operation == "min") && kind != SlotKind::data)
        return AggregateQuery{column, column, kind};
    return std::nullopt;
}

}  // namespace

std::optional<Value> ContextState::aggregate(const ManagedObject& object, std::size_t property,
                                             std::string_view operation, std::string_view rest) {
    checkThread();
    if (fromParent_) return std::nullopt;  // the parent's unsaved changes would have to be counted too
    absorbInbox();
    EntityTable& members = storage_->table(object.table_->destinationEntity(property));
    const RowSlot& inverse = members.slots()[object.table_->inverseProperty(property)];
    const std::optional<AggregateQuery> query = queryFor(members, operation, rest);
    if (!query || inverse.kind != SlotKind::toOne) return std::nullopt;

    // Members with unsaved changes count as they are in memory, all others as they are in the file.
    std::vector<std::int64_t> excluded;
    Value::Array values;
    for (const Ref<ManagedObject>& changed : listed_) {
        if (changed->table_ != &members || !changed->hasChanges()) continue;
        if (changed->key_ > 0) excluded.push_back(changed->key_);
        if (excluded.size() > mostExclusions) return std::nullopt;
        if (changed->isDeleted() || members.slot<ToOneSlot>(*changed, inverse.offset).get() != &object)
            continue;
        values.push_back(operation == "count" ? Value(1) : changed->valueForKeyPath(rest));
    }
    if (object.key_ > 0) {
        sqlite::Database* file = database(nullptr);
        if (!file) return std::nullopt;
        std::string sql = "SELECT " + query->expression + " FROM " + sqlite::quoted(members.entity().name) +
                          " WHERE " + sqlite::quoted(inverse.name) + " = ?1";
        if (!excluded.empty()) {
            // The list grows by doubling, the last key repeated, so that few different statements are needed.
            while ((excluded.size() & (excluded.size() - 1)) != 0) excluded.push_back(excluded.back());
            sql += " AND \"_id\" NOT IN (?2";
            for (std::size_t i = 1; i < excluded.size(); ++i) sql += ", ?" + std::to_string(i + 2);
            sql += ")";
        }
        if (!query->extremeOf.empty())
            sql += " AND " + query->extremeOf + " IS NOT NULL ORDER BY " + query->extremeOf +
                   (operation == "max" ? " DESC" : " ASC") + " LIMIT 1";
        sqlite::Statement* statement = file->prepared(sql, nullptr);
        if (!statement) return std::nullopt;
        const sqlite::StatementUse use(*statement);
        use->bind(1, object.key_);
        for (std::size_t i = 0; i < excluded.size(); ++i) use->bind(static_cast<int>(i) + 2, excluded[i]);
        const int code = use->step();
        if (code == SQLITE_ROW)
            values.push_back(valueOfColumn(*use, query->kind));
        else if (code != SQLITE_DONE)
            return std::nullopt;
    }
    if (values.size() == 1) return values.front();
    return collectionOperator(operation == "count" ? "sum" : operation, values, {});
}

}  // namespace orvane
