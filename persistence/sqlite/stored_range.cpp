#include "persistence/sqlite/stored_range.h"

#include <bit>
#include <cstdint>
#include <limits>
#include <numeric>

#include "persistence/sqlite/sql_compiler.h"

namespace orvane::sqlite {
namespace {

using Limits = std::numeric_limits<std::int64_t>;

/// Doubles in their order, counted from zero. The bit patterns of positive ones are in order already.
double doubleAt(std::int64_t position) {
    return position >= 0 ? std::bit_cast<double>(position) : -std::bit_cast<double>(-position);
}

Value numberAt(Column::Kind kind, std::int64_t position) {
    switch (kind) {
        case Column::Kind::real:
            return doubleAt(position);
        case Column::Kind::decimal:
            return DecimalSeconds(position);
        default:
            return position;
    }
}

Value storedAt(Column::Kind kind, std::int64_t position) {
    return kind == Column::Kind::real ? Value(doubleAt(position)) : Value(position);
}

}  // namespace

StoredPlace placeAmongStored(Column::Kind kind, const Value& number) {
    const std::int64_t infinity = std::bit_cast<std::int64_t>(std::numeric_limits<double>::infinity());
    const std::int64_t first = kind == Column::Kind::real ? -infinity : Limits::min();
    const std::int64_t last = kind == Column::Kind::real ? infinity : Limits::max();
    const auto firstWhere = [&](ComparisonOperator comparison) -> std::optional<std::int64_t> {
        const auto holds = [&](std::int64_t position) {
            return compareValues(comparison, false, false, numberAt(kind, position), number);
        };
        if (!holds(last)) return std::nullopt;
        std::int64_t low = first;
        std::int64_t high = last;
        while (low < high) {
            // Rounded down, so that the range shrinks also when it is two long.
            const std::int64_t middle = (low & high) + ((low ^ high) >> 1);
            if (holds(middle))
                high = middle;
            else
                low = middle + 1;
        }
        return low;
    };
    StoredPlace place;
    if (const auto position = firstWhere(ComparisonOperator::greaterOrEqual))
        place.firstNotLess = storedAt(kind, *position);
    const auto greater = firstWhere(ComparisonOperator::greater);
    if (greater) place.firstGreater = storedAt(kind, *greater);
    if (!greater || *greater > first) place.lastNotGreater = storedAt(kind, greater ? *greater - 1 : last);
    return place;
}

std::optional<Value> storedConstant(const Column& column, const Value& constant) {
    switch (column.kind) {
        case Column::Kind::integer:
            if (constant.asBool() || constant.asInteger()) return Value(constant.integerValue());
            break;
        case Column::Kind::real:
            if (constant.asDouble()) return constant;
            break;
        case Column::Kind::decimal:
            if (const DecimalSeconds* seconds = constant.asDecimal())
                return Value(static_cast<std::int64_t>(seconds->count()));
            break;
        case Column::Kind::date:
            if (const Date* date = constant.asDate()) return Value(secondsSinceEpoch(*date));
            break;
        case Column::Kind::text:
            if (constant.asString()) return constant;
            break;
        case Column::Kind::data:
            if (constant.asData()) return constant;
            break;
        case Column::Kind::object:
            if (const auto key = keyOfStoredObject(constant, *column.entity)) return Value(*key);
            break;
    }
    return std::nullopt;
}

}  // namespace orvane::sqlite
