#include "persistence/sqlite/store.h"

#include "persistence/sqlite/sql_compiler.h"

namespace orvane::sqlite {

namespace {

/// A thread that is nobody's main thread can wait: the parent's commits may be slow.
constexpr int workerBusyTimeout = 2000;  // milliseconds

/// The inputs of a derived value as SQLite hands them to an aggregate function.
class FunctionRow final : public StoredRow {
  public:
    explicit FunctionRow(sqlite3_value** values) : values_(values) {}

    std::optional<bool> boolean(std::size_t input) const override {
        return absent(input) ? std::nullopt : std::optional(sqlite3_value_int(values_[input]) != 0);
    }
    std::optional<std::int64_t> integer(std::size_t input) const override {
        return absent(input) ? std::nullopt
                             : std::optional<std::int64_t>(sqlite3_value_int64(values_[input]));
    }
    std::optional<double> real(std::size_t input) const override {
        return absent(input) ? std::nullopt : std::optional(sqlite3_value_double(values_[input]));
    }
    std::optional<Date> date(std::size_t input) const override {
        return absent(input) ? std::nullopt
                             : std::optional(dateFromSecondsSinceEpoch(sqlite3_value_double(values_[input])));
    }
    std::optional<std::string_view> text(std::size_t input) const override {
        if (absent(input)) return std::nullopt;
        const auto* bytes = reinterpret_cast<const char*>(sqlite3_value_text(values_[input]));
        return std::string_view(bytes ? bytes : "",
                                static_cast<std::size_t>(sqlite3_value_bytes(values_[input])));
    }

  private:
    bool absent(std::size_t input) const { return sqlite3_value_type(values_[input]) == SQLITE_NULL; }

    sqlite3_value** values_;
};

void sumStep(sqlite3_context* context, int, sqlite3_value** values) {
    const auto* derived = static_cast<const DerivedSeconds*>(sqlite3_user_data(context));
    auto* sum = static_cast<std::int64_t*>(sqlite3_aggregate_context(context, sizeof(std::int64_t)));
    if (!sum) return sqlite3_result_error_nomem(context);
    if (__builtin_add_overflow(*sum, derived->compute(FunctionRow(values)).count(), sum))
        sqlite3_result_error(context, "the sum is too large", -1);
}

void sumFinal(sqlite3_context* context) {
    const auto* sum = static_cast<const std::int64_t*>(sqlite3_aggregate_context(context, 0));
    sqlite3_result_int64(context, sum ? *sum : 0);
}

EntityStatements statementsFor(const EntityDescription& entity) {
    EntityStatements result;
    result.tableName = sqlite::quoted(entity.name);
    for (const AttributeDescription& attribute : entity.attributes)
        result.columnNames.push_back(attribute.name);
    for (const RelationshipDescription& relationship : entity.relationships)
        if (!relationship.toMany) result.columnNames.push_back(relationship.name);
    result.columns = result.columnsWithoutTexts = "t0.\"_id\"";
    std::string names = "\"_id\"";
    std::string places = "?";
    for (const std::string& name : result.columnNames) {
        const std::string column = ", t0." + sqlite::quoted(name);
        result.columns += column;
        const AttributeDescription* attribute = entity.attribute(name);
        if (!attribute || (attribute->type != AttributeType::text && attribute->type != AttributeType::data))
            result.columnsWithoutTexts += column;
        names += ", " + sqlite::quoted(name);
        places += ", ?";
    }
    result.fromTable = " FROM " + result.tableName + " AS t0";
    result.selectByKeys =
        "SELECT " + result.columns + result.fromTable + " WHERE t0.\"_id\" BETWEEN ?1 AND ?2";
    result.insert = "INSERT INTO " + result.tableName + " (" + names + ") VALUES (" + places + ")";
    result.remove = "DELETE FROM " + result.tableName + " WHERE \"_id\" = ?";
    return result;
}

}  // namespace

std::string sumFunction(const EntityDescription& entity, std::string_view derivedKey) {
    return "sum_" + entity.name + "_" + std::string(derivedKey);
}

const std::string& EntityStatements::update(std::uint64_t written) {
    std::string& text = updates[written];
    if (text.empty()) {
        text = "UPDATE " + tableName + " SET ";
        bool first = true;
        for (std::size_t i = 0; i < columnNames.size(); ++i) {
            if ((written >> i & 1) == 0) continue;
            text += (first ? "" : ", ") + sqlite::quoted(columnNames[i]) + " = ?";
            first = false;
        }
        text += " WHERE \"_id\" = ?";
    }
    return text;
}

EntityStatements& StatementTexts::of(std::size_t entityIndex) {
    EntityStatements& texts = texts_[entityIndex];
    if (texts.tableName.empty()) texts = statementsFor(model_.entities()[entityIndex]);
    return texts;
}

Store::Store(std::filesystem::path file, PreparedStore prepared, PrepareOptions options,
             const ManagedObjectModel& model)
    : file_(std::move(file)),
      identifier_(std::make_shared<const std::string>(std::move(prepared.storeIdentifier))),
      options_(std::move(options)),
      database_(std::move(prepared.database)),
      statements_(model) {}

bool Store::beginAhead(Transaction::Kind kind, Error* error) {
    ahead_.reset();
    auto transaction = std::make_unique<Transaction>(*database_, kind, error);
    if (!transaction->begun()) return false;
    ahead_ = std::move(transaction);
    return true;
}

bool Store::declareDerived(const EntityDescription& entity, std::span<const DerivedSeconds> derived,
                           Error* error) {
    for (const DerivedSeconds& value : derived) derived_.push_back({sumFunction(entity, value.key), &value});
    return registerDerived(*database_, error);
}

bool Store::registerDerived(Database& database, Error* error) const {
    for (const Derived& derived : derived_) {
        const int result = sqlite3_create_function_v2(
            database.handle(), derived.function.c_str(), static_cast<int>(derived.value->inputs.size()),
            SQLITE_UTF8 | SQLITE_DETERMINISTIC, const_cast<DerivedSeconds*>(derived.value), nullptr, sumStep,
            sumFinal, nullptr);
        if (result != SQLITE_OK) {
            assignError(error, database.lastError());
            return false;
        }
    }
    return true;
}

std::unique_ptr<Database> Store::openConnection(Error* error) const {
    PrepareOptions options = options_;
    options.open.busyTimeoutMilliseconds = workerBusyTimeout;
    auto database = sqlite::openConnection(file_, options, error);
    if (!database || !registerFunctions(*database, error) || !registerDerived(*database, error))
        return nullptr;
    return database;
}

}  // namespace orvane::sqlite
