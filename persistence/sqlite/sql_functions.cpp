#include "persistence/sqlite/comparison_writer.h"
#include "persistence/sqlite/sql_compiler.h"

namespace orvane::sqlite {
namespace {

bool isText(sqlite3_value* value) { return sqlite3_value_type(value) == SQLITE_TEXT; }

std::string_view textOf(sqlite3_value* value) {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_value_text(value));
    return {bytes ? bytes : "", static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

/// (operator, left, right): whether it holds; not for what is no text.
void applyTextOperator(sqlite3_context* context, int, sqlite3_value** arguments) {
    const auto comparison = static_cast<ComparisonOperator>(sqlite3_value_int(arguments[0]));
    const bool holds = isText(arguments[1]) && isText(arguments[2]) &&
                       compareTexts(comparison, textOf(arguments[1]), textOf(arguments[2]));
    sqlite3_result_int(context, holds);
}

/// (mode, text): the folded text; NULL for what is no text.
void foldText(sqlite3_context* context, int, sqlite3_value** arguments) {
    if (!isText(arguments[1])) return sqlite3_result_null(context);
    const int mode = sqlite3_value_int(arguments[0]);
    const std::string folded = foldedText(textOf(arguments[1]), mode & 1, mode & 2);
    sqlite3_result_text64(context, folded.data(), folded.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

}  // namespace

bool registerFunctions(Database& database, Error* error) {
    const auto add = [&](const char* name, int arguments, auto* function) {
        return sqlite3_create_function_v2(database.handle(), name, arguments,
                                          SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS, nullptr,
                                          function, nullptr, nullptr, nullptr) == SQLITE_OK;
    };
    if (add(textFunction, 3, applyTextOperator) && add(foldingFunction, 2, foldText)) return true;
    assignError(error, database.lastError());
    return false;
}

}  // namespace orvane::sqlite
