#include "foundation/key_conversion.h"

namespace orvane::keys {

bool toBool(const Value& value, std::string_view className, std::string_view key) {
    if (const bool* boolean = value.asBool()) return *boolean;
    if (value.isNumber() && (value == Value(0) || value == Value(1))) return value.boolValue();
    throw WrongValueError(className, key, "boolean", value);
}

std::int64_t toInteger(const Value& value, std::string_view className, std::string_view key) {
    if (value.isNumber() && Value(value.integerValue()) == value) return value.integerValue();
    throw WrongValueError(className, key, "integer", value);
}

double toDouble(const Value& value, std::string_view className, std::string_view key) {
    if (value.isNumber()) return value.doubleValue();
    throw WrongValueError(className, key, "number", value);
}

DecimalSeconds toDecimal(const Value& value, std::string_view className, std::string_view key) {
    if (const DecimalSeconds* decimal = value.asDecimal()) return *decimal;
    if (const double* number = value.asDouble()) return decimalSeconds(*number);
    constexpr std::int64_t microsecondsPerSecond = 1'000'000;
    std::int64_t count = 0;
    if (value.isNumber() && !__builtin_mul_overflow(value.integerValue(), microsecondsPerSecond, &count))
        return DecimalSeconds(count);
    throw WrongValueError(className, key, "decimal", value);
}

Date toDate(const Value& value, std::string_view className, std::string_view key) {
    if (const Date* date = value.asDate()) return *date;
    throw WrongValueError(className, key, "date", value);
}

const std::string& toString(const Value& value, std::string_view className, std::string_view key) {
    if (const std::string* text = value.asString()) return *text;
    throw WrongValueError(className, key, "text", value);
}

const Data& toData(const Value& value, std::string_view className, std::string_view key) {
    if (const Data* data = value.asData()) return *data;
    throw WrongValueError(className, key, "data", value);
}

Ref<KeyedObject> toObject(const Value& value, std::string_view className, std::string_view key) {
    if (Ref<KeyedObject> object = value.asObject()) return object;
    throw WrongValueError(className, key, "object", value);
}

const Value::Array& toArray(const Value& value, std::string_view className, std::string_view key) {
    if (const Value::Array* array = value.asArray()) return *array;
    throw WrongValueError(className, key, "list", value);
}

void throwWrongObject(const Value& value, std::string_view className, std::string_view key) {
    throw WrongValueError(className, key, "object of the relationship's class", value);
}

}  // namespace orvane::keys
