#include "persistence/sqlite/comparison_writer.h"
#include "persistence/sqlite/sql_compiler.h"

namespace orvane::sqlite {
namespace {

std::string_view textOf(sqlite3_value* value) {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_value_text(value));
    return {bytes ? bytes : "", static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

/// orvane_text(code, left, right): see textFunctionCode.
void compareTextArguments(sqlite3_context* context, int, sqlite3_value** arguments) {
    if (sqlite3_value_type(arguments[1]) != SQLITE_TEXT || sqlite3_value_type(arguments[2]) != SQLITE_TEXT)
        return sqlite3_result_int(context, 0);
    const int code = sqlite3_value_int(arguments[0]);
    const auto comparison = static_cast<ComparisonOperator>(code / 4);
    const bool ignoreCase = code & 1;
    const bool ignoreDiacritics = code & 2;
    if (!ignoreCase && !ignoreDiacritics) {
        sqlite3_result_int(context, compareTexts(comparison, textOf(arguments[1]), textOf(arguments[2])));
        return;
    }
    // The right side is nearly always the same for all rows: SQLite then keeps what was made of it.
    const auto* folded = static_cast<const std::string*>(sqlite3_get_auxdata(context, 2));
    std::string foldedHere;
    if (!folded) {
        foldedHere = foldedText(textOf(arguments[2]), ignoreCase, ignoreDiacritics);
        sqlite3_set_auxdata(context, 2, new std::string(foldedHere),
                            [](void* text) { delete static_cast<std::string*>(text); });
        folded = &foldedHere;
    }
    const std::string left = foldedText(textOf(arguments[1]), ignoreCase, ignoreDiacritics);
    sqlite3_result_int(context, compareTexts(comparison, left, *folded));
}

}  // namespace

bool registerFunctions(Database& database, Error* error) {
    const int code = sqlite3_create_function_v2(database.handle(), textFunctionName, 3,
                                                SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS,
                                                nullptr, compareTextArguments, nullptr, nullptr, nullptr);
    if (code == SQLITE_OK) return true;
    assignError(error, database.lastError());
    return false;
}

}  // namespace orvane::sqlite
