#pragma once

#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "foundation/predicate_node.h"
#include "foundation/sort_order.h"
#include "persistence/model.h"
#include "persistence/sqlite/database.h"

namespace orvane::sqlite {

/// Text of a condition and of an order over the rows of one entity, which stands in FROM under the alias
/// `t0`.
struct CompiledQuery {
    std::string joins;            ///< " LEFT JOIN …" for key paths through to-one relationships; else empty
    std::string where;            ///< condition without the word WHERE; empty for "every row"
    std::string orderBy;          ///< terms without the words ORDER BY; empty for "any order"
    std::vector<Value> bindings;  ///< in the order of the place holders in `where`
    /// Entities besides the fetched one whose rows the answer depends on.
    std::set<const EntityDescription*> otherEntities;

    /// A second condition whose rows belong to the answer too and which shares no row with the first
    /// (inverted rows of an interval, through their own index, see schema.h); empty when there is none. Its
    /// FROM clause needs `alternativeFrom` behind the table's alias. It uses the same bindings.
    std::string alternativeWhere;
    std::string alternativeFrom;

    /// A column of reals whose range bounds the answer and which an index gives in order, so that the answer
    /// may be read in pieces by (column, "_id"); empty when the pieces go by "_id".
    std::string pieceColumn;
    /// The place holder, counted from 1, that bounds the column from below; 0 when nothing does. The bound
    /// itself is out of the range when it is open.
    int pieceLowerParameter = 0;
    bool pieceLowerIsOpen = false;
};

/// Translates predicate and orders. None when some part (a computed key, a collection operator, a key that
/// nobody knows) has no column, or SQLite could not take the condition: the caller then decides in memory,
/// which also reports unknown keys. Answers are exactly those of Predicate::evaluate and sortUsing. `where`
/// may stand between ANDs.
std::optional<CompiledQuery> compileQuery(const ManagedObjectModel& model, const EntityDescription& entity,
                                          const PredicateNode* predicate, std::span<const SortOrder> orders);

/// Registers the functions that compiled conditions call, on every connection that runs them.
bool registerFunctions(Database& database, Error* error);

/// The key of a stored object as conditions compare it: supplied by the object graph, since a value holds an
/// object. None for what is no stored object of that entity.
std::optional<std::int64_t> keyOfStoredObject(const Value& value, const EntityDescription& entity);

}  // namespace orvane::sqlite
