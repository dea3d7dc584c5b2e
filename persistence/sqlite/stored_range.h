#pragma once

#include <optional>

#include "foundation/internal.h"
#include "persistence/sqlite/comparison_writer.h"

namespace orvane::sqlite {

/// Where a constant lies among the values that a column of numbers can hold, by the comparison that memory
/// makes. Both are values as they are stored.
struct StoredPlace {
    Value firstNotLess;    ///< none when every value is less
    Value firstGreater;    ///< none when no value is greater
    Value lastNotGreater;  ///< none when every value is greater
};

StoredPlace placeAmongStored(Column::Kind kind, const Value& number);

/// The constant as the column stores it, when it needs no search: a value of the column's own type. None
/// otherwise, and for what the column can never equal.
std::optional<Value> storedConstant(const Column& column, const Value& constant);

}  // namespace orvane::sqlite
