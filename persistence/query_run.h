#pragma once

#include <string>
#include <vector>

#include "foundation/internal.h"
#include "persistence/fetch_request.h"
#include "persistence/object_table.h"
#include "persistence/sqlite/sql_compiler.h"

namespace orvane {

/// Which part of a compiled query is meant: its rows proper, or the rare ones told apart by another index.
enum class QueryBranch { ordinary, alternative };

/// What follows the table in the statement.
inline std::string tail(const sqlite::CompiledQuery& query, QueryBranch branch) {
    const bool isAlternative = branch == QueryBranch::alternative;
    const std::string& where = isAlternative ? query.alternativeWhere : query.where;
    std::string result = isAlternative ? " " + query.alternativeFrom : std::string();
    result += query.joins;
    if (!where.empty()) result += " WHERE " + where;
    return result;
}

/// Hands each row that `sql` yields to `take`, with the query's values and then `further` ones bound. False,
/// with an error, when the file fails.
template <class Take>
bool runQuery(sqlite::Database& file, const std::string& sql, const sqlite::CompiledQuery& query,
              const std::vector<Value>& further, Error* error, Take&& take) {
    sqlite::Statement* statement = file.prepared(sql, error);
    if (!statement) return false;
    const sqlite::StatementUse use(*statement);
    int parameter = 1;
    for (const Value& value : query.bindings) use->bind(parameter++, value);
    for (const Value& value : further) use->bind(parameter++, value);
    int code;
    while ((code = use->step()) == SQLITE_ROW) take(*use);
    if (code == SQLITE_DONE) return true;
    assignError(error, file.lastError());
    return false;
}

/// What to read of the rows. Conditions judged in memory may concern any value.
inline RowPart rowPart(const FetchRequest& request, bool judgeInMemory) {
    return request.textsWhenRead && !judgeInMemory ? RowPart::withoutTexts : RowPart::all;
}

/// Leaves of a complete answer what the request's offset and limit want.
void cutToLimits(std::vector<Ref<ManagedObject>>& objects, const FetchRequest& request);

}  // namespace orvane
