#include "persistence/sqlite/comparison_writer.h"

#include <algorithm>
#include <span>

#include "persistence/sqlite/stored_range.h"

namespace orvane::sqlite {
namespace {

/// The same comparison with its sides exchanged.
ComparisonOperator mirrored(ComparisonOperator comparison) {
    switch (comparison) {
        case ComparisonOperator::less:
            return ComparisonOperator::greater;
        case ComparisonOperator::lessOrEqual:
            return ComparisonOperator::greaterOrEqual;
        case ComparisonOperator::greater:
            return ComparisonOperator::less;
        case ComparisonOperator::greaterOrEqual:
            return ComparisonOperator::lessOrEqual;
        default:
            return comparison;
    }
}

std::string_view sqlOperator(ComparisonOperator comparison) {
    switch (comparison) {
        case ComparisonOperator::less:
            return "<";
        case ComparisonOperator::lessOrEqual:
            return "<=";
        case ComparisonOperator::greater:
            return ">";
        default:
            return ">=";
    }
}

bool isNumber(const Column& column) {
    return column.kind == Column::Kind::integer || column.kind == Column::Kind::real ||
           column.kind == Column::Kind::decimal;
}

bool sameClass(const Column& left, const Column& right) {
    if (isNumber(left) || isNumber(right)) return isNumber(left) && isNumber(right);
    return left.kind == right.kind && left.entity == right.entity;
}

/// Whether the file compares the numbers of two columns as they are: decimals are kept in another unit.
bool sameUnit(const Column& left, const Column& right) {
    return (left.kind == Column::Kind::decimal) == (right.kind == Column::Kind::decimal);
}

/// Elements of a list that is written in the predicate or given as an argument; none for what is no list.
std::optional<std::vector<Side>> elementsOf(const Side& side) {
    if (const auto* list = std::get_if<std::vector<Side>>(&side.content)) return *list;
    const Value* constant = side.constant();
    const Value::Array* array = constant ? constant->asArray() : nullptr;
    if (!array) return std::nullopt;
    std::vector<Side> elements;
    elements.reserve(array->size());
    for (const Value& element : *array) elements.push_back(Side{&element});
    return elements;
}

bool isList(const Side& side) { return std::holds_alternative<std::vector<Side>>(side.content); }

/// Long chains are nested evenly: SQLite limits the depth of an expression, not its length.
std::string joined(std::span<const std::string> terms, std::string_view joint) {
    if (terms.size() == 1) return terms.front();
    std::string result = "(";
    if (terms.size() <= 64) {
        result += terms.front();
        for (const std::string& term : terms.subspan(1)) result.append(joint).append(term);
    } else {
        const std::size_t half = terms.size() / 2;
        result += joined(terms.first(half), joint);
        result.append(joint).append(joined(terms.subspan(half), joint));
    }
    return result + ")";
}

/// `neutral` terms change nothing, a `decisive` one decides.
std::string junction(std::vector<std::string> terms, std::string_view joint, std::string_view neutral,
                     std::string_view decisive) {
    if (std::find(terms.begin(), terms.end(), decisive) != terms.end()) return std::string(decisive);
    std::erase(terms, neutral);
    return terms.empty() ? std::string(neutral) : joined(terms, joint);
}

}  // namespace

std::string conjunction(std::vector<std::string> terms) {
    return junction(std::move(terms), " AND ", everyRow, noRow);
}

std::string disjunction(std::vector<std::string> terms) {
    return junction(std::move(terms), " OR ", noRow, everyRow);
}

std::string negated(const std::string& condition) {
    if (condition == everyRow) return std::string(noRow);
    if (condition == noRow) return std::string(everyRow);
    return "(" + condition + ") IS NOT TRUE";
}

std::optional<std::string> ComparisonWriter::write(const PredicateNode& comparison, const Side& left,
                                                   const Side& right, std::vector<Bound>* bounds) {
    bounds_ = bounds;
    if (!comparison.ignoreCase && !comparison.ignoreDiacritics)
        return compare(comparison.comparison, left, right);
    return compare(comparison.comparison, folded(left, comparison), folded(right, comparison));
}

/// The side with its texts as they are compared when differences are ignored: constants are folded here and
/// now.
Side ComparisonWriter::folded(const Side& side, const PredicateNode& comparison) {
    const auto fold = [&](const std::string& text) {
        return foldedText(text, comparison.ignoreCase, comparison.ignoreDiacritics);
    };
    if (const Column* column = side.column()) {
        if (column->kind != Column::Kind::text) return side;
        const int mode = (comparison.ignoreCase ? 1 : 0) + (comparison.ignoreDiacritics ? 2 : 0);
        return Side{
            Column{std::string(foldingFunction) + "(" + std::to_string(mode) + ", " + column->sql + ")",
                   Column::Kind::text,
                   nullptr,
                   {}}};
    }
    if (const Value* constant = side.constant()) {
        if (const std::string* text = constant->asString())
            return Side{&foldedConstants_.emplace_back(fold(*text))};
        const Value::Array* array = constant->asArray();
        if (!array) return side;
        Value::Array elements = *array;
        for (Value& element : elements)
            if (const std::string* text = element.asString()) element = fold(*text);
        return Side{&foldedConstants_.emplace_back(std::move(elements))};
    }
    std::vector<Side> elements;
    for (const Side& element : std::get<std::vector<Side>>(side.content))
        elements.push_back(folded(element, comparison));
    return Side{std::move(elements)};
}

std::optional<std::string> ComparisonWriter::compare(ComparisonOperator comparison, const Side& left,
                                                     const Side& right) {
    if (left.constant() && right.constant())
        return std::string(
            compareValues(comparison, false, false, *left.constant(), *right.constant()) ? everyRow : noRow);
    switch (comparison) {
        case ComparisonOperator::equal:
            return equal(left, right);
        case ComparisonOperator::notEqual: {
            bounds_ = nullptr;
            const Text condition = equal(left, right);
            return condition ? Text(negated(*condition)) : std::nullopt;
        }
        case ComparisonOperator::in:
            return anyEqual(right, left);
        case ComparisonOperator::between:
            return between(left, right);
        case ComparisonOperator::contains:
            if (elementsOf(left)) return anyEqual(left, right);
            return textOperator(comparison, left, right);
        case ComparisonOperator::beginsWith:
        case ComparisonOperator::endsWith:
        case ComparisonOperator::like:
            return textOperator(comparison, left, right);
        default:
            return ordered(comparison, left, right);
    }
}

std::optional<std::string> ComparisonWriter::equal(const Side& left, const Side& right) {
    if (isList(left) || isList(right)) return std::nullopt;
    if (left.constant()) return equal(right, left);
    const Column& column = *left.column();
    if (right.constant()) return equalConstant(column, *right.constant());

    const Column& other = *right.column();
    const std::string bothAbsent = "(" + column.sql + " IS NULL AND " + other.sql + " IS NULL)";
    if (!sameClass(column, other)) return bothAbsent;
    if (!sameUnit(column, other)) return std::nullopt;
    return column.sql + " IS " + other.sql;
}

std::optional<std::string> ComparisonWriter::ordered(ComparisonOperator comparison, const Side& left,
                                                     const Side& right) {
    if (isList(left) || isList(right)) return std::nullopt;
    if (left.constant()) return ordered(mirrored(comparison), right, left);
    const Column& column = *left.column();
    if (right.constant()) return orderedConstant(comparison, column, *right.constant());

    const Column& other = *right.column();
    if (!sameClass(column, other) || column.kind == Column::Kind::object) return std::string(noRow);
    if (!sameUnit(column, other)) return std::nullopt;
    return column.sql + " " + std::string(sqlOperator(comparison)) + " " + other.sql;
}

std::optional<std::string> ComparisonWriter::textOperator(ComparisonOperator comparison, const Side& left,
                                                          const Side& right) {
    const auto isText = [](const Side& side) {
        if (const Value* constant = side.constant()) return constant->asString() != nullptr;
        return side.column() && side.column()->kind == Column::Kind::text;
    };
    if (!isText(left) || !isText(right)) return std::string(noRow);
    if (comparison == ComparisonOperator::beginsWith && left.column() && right.constant())
        return prefixed(*left.column(), *right.constant()->asString());
    const auto sql = [&](const Side& side) {
        return side.column() ? side.column()->sql : parameter(*side.constant());
    };
    std::string result =
        std::string(textFunction) + "(" + std::to_string(static_cast<int>(comparison)) + ", ";
    result += sql(left);
    return result + ", " + sql(right) + ")";
}

std::optional<std::string> ComparisonWriter::anyEqual(const Side& list, const Side& value) {
    if (const Value* constant = list.constant(); constant && constant->asArray() && value.column())
        return amongConstants(*value.column(), *constant->asArray());
    const auto elements = elementsOf(list);
    if (!elements) return std::string(noRow);
    bounds_ = nullptr;
    std::vector<std::string> terms;
    for (const Side& element : *elements) {
        Text term = compare(ComparisonOperator::equal, element, value);
        if (!term) return term;
        terms.push_back(std::move(*term));
    }
    return disjunction(std::move(terms));
}

std::optional<std::string> ComparisonWriter::between(const Side& value, const Side& bounds) {
    const auto elements = elementsOf(bounds);
    if (!elements || elements->size() != 2) return std::string(noRow);
    const Text low = compare(ComparisonOperator::greaterOrEqual, value, elements->front());
    const Text high = compare(ComparisonOperator::lessOrEqual, value, elements->back());
    if (!low || !high) return std::nullopt;
    return conjunction({*low, *high});
}

std::string ComparisonWriter::equalConstant(const Column& column, const Value& constant) {
    if (constant.isNone()) return column.sql + " IS NULL";
    if (auto stored = storedConstant(column, constant)) return bounded(column, "=", std::move(*stored));
    if (!isNumber(column) || !constant.isNumber()) return std::string(noRow);
    // Several stored numbers can equal one that is less exact; or none does.
    StoredPlace place = placeAmongStored(column.kind, constant);
    if (place.firstNotLess.isNone() || place.firstNotLess == place.firstGreater) return std::string(noRow);
    if (place.firstNotLess == place.lastNotGreater)
        return bounded(column, "=", std::move(place.firstNotLess));
    const std::string low = bounded(column, ">=", std::move(place.firstNotLess));
    return "(" + low + " AND " + bounded(column, "<=", std::move(place.lastNotGreater)) + ")";
}

std::string ComparisonWriter::orderedConstant(ComparisonOperator comparison, const Column& column,
                                              const Value& constant) {
    if (column.kind == Column::Kind::object) return std::string(noRow);
    if (auto stored = storedConstant(column, constant))
        return bounded(column, sqlOperator(comparison), std::move(*stored));
    if (!isNumber(column) || !constant.isNumber()) return std::string(noRow);

    StoredPlace place = placeAmongStored(column.kind, constant);
    switch (comparison) {
        case ComparisonOperator::less:
            if (place.firstNotLess.isNone()) return column.sql + " IS NOT NULL";
            return bounded(column, "<", std::move(place.firstNotLess));
        case ComparisonOperator::lessOrEqual:
            if (place.lastNotGreater.isNone()) return std::string(noRow);
            return bounded(column, "<=", std::move(place.lastNotGreater));
        case ComparisonOperator::greater:
            if (place.firstGreater.isNone()) return std::string(noRow);
            return bounded(column, ">=", std::move(place.firstGreater));
        default:
            if (place.firstNotLess.isNone()) return std::string(noRow);
            return bounded(column, ">=", std::move(place.firstNotLess));
    }
}

std::string ComparisonWriter::amongConstants(const Column& column, const Value::Array& constants) {
    std::vector<std::string> terms;
    std::string list;
    bounds_ = nullptr;
    for (const Value& constant : constants) {
        if (auto stored = storedConstant(column, constant)) {
            list += (list.empty() ? "" : ", ") + parameter(std::move(*stored));
            continue;
        }
        terms.push_back(equalConstant(column, constant));
    }
    if (!list.empty()) terms.push_back(column.sql + " IN (" + list + ")");
    return disjunction(std::move(terms));
}

std::string ComparisonWriter::prefixed(const Column& column, const std::string& prefix) {
    if (prefix.empty()) return column.sql + " IS NOT NULL";
    // Texts with the prefix stand together in an index: from the prefix itself up to the next text of its
    // length.
    std::string next = prefix;
    while (!next.empty() && next.back() == '\xff') next.pop_back();
    std::string low = bounded(column, ">=", prefix);
    if (next.empty()) return low;
    next.back() = static_cast<char>(static_cast<unsigned char>(next.back()) + 1);
    return "(" + low + " AND " + bounded(column, "<", std::move(next)) + ")";
}

std::string ComparisonWriter::parameter(Value value) {
    bindings_.push_back(std::move(value));
    return "?" + std::to_string(bindings_.size());
}

std::string ComparisonWriter::bounded(const Column& column, std::string_view comparison, Value value) {
    const std::string place = parameter(std::move(value));
    if (bounds_ && !column.ownName.empty())
        bounds_->push_back({column.ownName, std::string(comparison), static_cast<int>(bindings_.size())});
    return column.sql + " " + std::string(comparison) + " " + place;
}

}  // namespace orvane::sqlite
