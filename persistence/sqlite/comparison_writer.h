#pragma once

#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "foundation/internal.h"
#include "foundation/predicate_node.h"
#include "persistence/model.h"

namespace orvane::sqlite {

/// A column as a side of a comparison.
struct Column {
    /// What its values are; booleans and integers alike are `integer`.
    enum class Kind { integer, real, decimal, date, text, data, object };

    std::string sql;
    Kind kind = Kind::integer;
    const EntityDescription* entity = nullptr;  ///< of `object`: whose keys it holds
    std::string ownName;  ///< name of a column of the fetched entity itself; empty for joined ones
};

/// A side of a comparison: a constant, which the predicate owns, a column, or a list of such.
struct Side {
    std::variant<const Value*, Column, std::vector<Side>> content;

    const Value* constant() const {
        const auto* value = std::get_if<const Value*>(&content);
        return value ? *value : nullptr;
    }
    const Column* column() const { return std::get_if<Column>(&content); }
};

/// One end of a range that every row of the answer lies in: `column` compared with a bound value.
struct Bound {
    std::string column;
    std::string comparison;  ///< "<", "<=", ">", ">=" or "="
    int place;               ///< number of the place holder

    std::string parameter() const { return "?" + std::to_string(place); }
    bool isUpper() const { return comparison[0] != '>'; }
    bool isLower() const { return comparison[0] != '<'; }
};

/// Conditions that hold for every row and for none.
inline constexpr std::string_view everyRow = "1";
inline constexpr std::string_view noRow = "0";

/// Terms joined by AND or OR, in parentheses when there are several. Terms that decide alone, or change
/// nothing, are worked in, so that neither constant stands within a condition.
std::string conjunction(std::vector<std::string> terms);
std::string disjunction(std::vector<std::string> terms);

/// The condition that holds exactly where the given one does not, absent values included.
std::string negated(const std::string& condition);

/// Writes comparisons as SQL that is true exactly where the comparison is; where it is not, it may be NULL.
class ComparisonWriter {
  public:
    /// Appends what it binds to `bindings`. Place holders are numbered, so conditions may be used in any
    /// order.
    explicit ComparisonWriter(std::vector<Value>& bindings) : bindings_(bindings) {}

    /// None when SQL cannot tell what memory would. With `bounds`, the ends of ranges that the comparison
    /// sets are appended there.
    std::optional<std::string> write(const PredicateNode& comparison, const Side& left, const Side& right,
                                     std::vector<Bound>* bounds);

  private:
    using Text = std::optional<std::string>;

    Side folded(const Side& side, const PredicateNode& comparison);

    Text compare(ComparisonOperator comparison, const Side& left, const Side& right);
    Text equal(const Side& left, const Side& right);
    Text ordered(ComparisonOperator comparison, const Side& left, const Side& right);
    Text textOperator(ComparisonOperator comparison, const Side& left, const Side& right);
    Text anyEqual(const Side& list, const Side& value);
    Text between(const Side& value, const Side& bounds);

    std::string equalConstant(const Column& column, const Value& constant);
    std::string orderedConstant(ComparisonOperator comparison, const Column& column, const Value& constant);
    std::string amongConstants(const Column& column, const Value::Array& constants);
    std::string prefixed(const Column& column, const std::string& prefix);

    std::string parameter(Value value);
    std::string bounded(const Column& column, std::string_view comparison, Value value);

    std::vector<Value>& bindings_;
    std::vector<Bound>* bounds_ = nullptr;
    std::deque<Value> foldedConstants_;
};

/// SQL functions that do what memory does. The first applies the text operator of that number to two texts;
/// the second yields a text without the differences to ignore: 1 those of case, 2 those of diacritics, 3
/// both.
inline constexpr const char* textFunction = "orvane_text";
inline constexpr const char* foldingFunction = "orvane_folded";

}  // namespace orvane::sqlite
