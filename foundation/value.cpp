#include "foundation/value.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "foundation/keyed_object.h"

namespace orvane {

namespace {

template <class T>
int order(const T& left, const T& right) {
    return left < right ? -1 : right < left ? 1 : 0;
}

constexpr double twoTo63 = 9223372036854775808.0;
constexpr std::int64_t microsecondsPerSecond = 1'000'000;

int compareIntegerWithDouble(std::int64_t left, double right) {
    if (right >= twoTo63) return -1;
    if (right < -twoTo63) return 1;
    const double whole = std::trunc(right);
    const int wholes = order(left, static_cast<std::int64_t>(whole));
    return wholes != 0 ? wholes : order(0.0, right - whole);
}

/// Wholes first. A double's fraction times a million needs more bits than any type has, but the sign of what
/// a fused multiplication leaves is that of the exact difference.
int compareDecimalWithDouble(DecimalSeconds left, double right) {
    const double whole = std::trunc(right);
    const int wholes = compareIntegerWithDouble(left.count() / microsecondsPerSecond, whole);
    if (wholes != 0) return wholes;
    const auto fraction = static_cast<double>(left.count() % microsecondsPerSecond);
    return order(0.0, std::fma(right - whole, 1e6, -fraction));
}

int compareDecimalWithInteger(DecimalSeconds left, std::int64_t right) {
    const int wholes = order(left.count() / microsecondsPerSecond, right);
    return wholes != 0 ? wholes : order(left.count() % microsecondsPerSecond, std::int64_t{0});
}

/// Zero has two forms, which are equal.
std::size_t hashOfDouble(double value) { return std::hash<double>{}(value + 0.0); }

/// A number that is whole is hashed as such, so that its type does not matter; so is a fraction as the double
/// that equals it, when one does.
std::size_t hashOfNumber(const Value& number) {
    if (Value(number.integerValue()) == number) return std::hash<std::int64_t>{}(number.integerValue());
    if (const DecimalSeconds* decimal = number.asDecimal())
        return hashOfDouble(static_cast<double>(static_cast<long double>(decimal->count()) / 1e6L));
    return hashOfDouble(number.doubleValue());
}

std::size_t combine(std::size_t seed, std::size_t hash) {
    return seed ^ (hash + 0x9e3779b97f4a7c15 + (seed << 6) + (seed >> 2));
}

std::string numberText(double value) {
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return {buffer, result.ptr};
}

std::string quotedText(std::string_view text) {
    std::string result = "\"";
    for (const char character : text) {
        switch (character) {
            case '"':
                result += "\\\"";
                break;
            case '\\':
                result += "\\\\";
                break;
            case '\n':
                result += "\\n";
                break;
            case '\r':
                result += "\\r";
                break;
            case '\t':
                result += "\\t";
                break;
            default:
                result += character;
        }
    }
    return result + "\"";
}

}  // namespace

Value::Value(double value) {
    if (!std::isnan(value)) storage_ = value;
}

Value::Value(Date value) {
    if (!std::isnan(secondsSinceEpoch(value))) storage_ = value;
}

Value::Value(Data value) : storage_(std::make_shared<const Data>(std::move(value))) {}
Value::Value(Array value) : storage_(std::make_shared<const Array>(std::move(value))) {}
Value::Value(Dictionary value) : storage_(std::make_shared<const Dictionary>(std::move(value))) {}

Value::Value(Ref<KeyedObject> object) {
    if (object) storage_ = std::move(object);
}

bool Value::isNumber() const { return asBool() || asInteger() || asDouble() || asDecimal(); }

const Data* Value::asData() const {
    const auto* data = std::get_if<std::shared_ptr<const Data>>(&storage_);
    return data ? data->get() : nullptr;
}

const Value::Array* Value::asArray() const {
    const auto* array = std::get_if<std::shared_ptr<const Array>>(&storage_);
    return array ? array->get() : nullptr;
}

const Dictionary* Value::asDictionary() const {
    const auto* dictionary = std::get_if<std::shared_ptr<const Dictionary>>(&storage_);
    return dictionary ? dictionary->get() : nullptr;
}

Ref<KeyedObject> Value::asObject() const {
    const auto* object = std::get_if<Ref<KeyedObject>>(&storage_);
    return object ? *object : nullptr;
}

bool Value::boolValue() const {
    if (const bool* value = asBool()) return *value;
    if (const std::int64_t* value = asInteger()) return *value != 0;
    if (const double* value = asDouble()) return *value != 0;
    if (const DecimalSeconds* value = asDecimal()) return value->count() != 0;
    return false;
}

std::int64_t Value::integerValue() const {
    if (const bool* value = asBool()) return *value;
    if (const std::int64_t* value = asInteger()) return *value;
    if (const DecimalSeconds* value = asDecimal()) return value->count() / microsecondsPerSecond;
    const double* value = asDouble();
    if (!value) return 0;
    if (*value >= twoTo63) return std::numeric_limits<std::int64_t>::max();
    if (*value < -twoTo63) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(*value);
}

double Value::doubleValue() const {
    if (const bool* value = asBool()) return *value ? 1 : 0;
    if (const std::int64_t* value = asInteger()) return static_cast<double>(*value);
    if (const double* value = asDouble()) return *value;
    if (const DecimalSeconds* value = asDecimal()) return static_cast<double>(value->count()) / 1e6;
    return 0;
}

std::optional<int> Value::compare(const Value& other) const {
    const auto asWhole = [](const Value& value) -> std::optional<std::int64_t> {
        if (const bool* boolean = value.asBool()) return *boolean ? 1 : 0;
        if (const std::int64_t* integer = value.asInteger()) return *integer;
        return std::nullopt;
    };
    if (isNumber() && other.isNumber()) {
        const auto leftWhole = asWhole(*this);
        const auto rightWhole = asWhole(other);
        if (leftWhole && rightWhole) return order(*leftWhole, *rightWhole);
        if (asDecimal() && other.asDecimal()) return order(*asDecimal(), *other.asDecimal());
        if (asDouble() && other.asDouble()) return order(*asDouble(), *other.asDouble());
        if (leftWhole && other.asDouble()) return compareIntegerWithDouble(*leftWhole, *other.asDouble());
        if (asDecimal() && rightWhole) return compareDecimalWithInteger(*asDecimal(), *rightWhole);
        if (asDecimal()) return compareDecimalWithDouble(*asDecimal(), *other.asDouble());
        const std::optional<int> mirrored = other.compare(*this);
        return mirrored ? std::optional(-*mirrored) : std::nullopt;
    }
    if (asDate() && other.asDate()) return order(*asDate(), *other.asDate());
    if (asString() && other.asString()) {
        const int result = asString()->compare(*other.asString());
        return order(result, 0);
    }
    if (asData() && other.asData()) return order(*asData(), *other.asData());
    return std::nullopt;
}

bool Value::equals(const Value& other) const {
    if (isNone() || other.isNone()) return isNone() && other.isNone();
    if (asArray()) return other.asArray() && *asArray() == *other.asArray();
    if (asDictionary()) return other.asDictionary() && *asDictionary() == *other.asDictionary();
    if (asColor()) return other.asColor() && *asColor() == *other.asColor();
    if (const auto* object = std::get_if<Ref<KeyedObject>>(&storage_)) {
        const auto* otherObject = std::get_if<Ref<KeyedObject>>(&other.storage_);
        return otherObject && *object == *otherObject;
    }
    return compare(other) == 0;
}

std::size_t Value::hash() const {
    if (isNumber()) return hashOfNumber(*this);
    if (const std::string* text = asString()) return std::hash<std::string_view>{}(*text);
    if (const Date* date = asDate()) return hashOfDouble(secondsSinceEpoch(*date));
    std::size_t result = storage_.index();
    if (const auto* object = std::get_if<Ref<KeyedObject>>(&storage_))
        result = std::hash<Ref<KeyedObject>>{}(*object);
    else if (const Data* data = asData())
        result = std::hash<std::string_view>{}({reinterpret_cast<const char*>(data->data()), data->size()});
    else if (const Color* color = asColor())
        for (const double component : {color->red, color->green, color->blue, color->alpha})
            result = combine(result, hashOfDouble(component));
    else if (const Array* array = asArray())
        for (const Value& element : *array) result = combine(result, element.hash());
    else if (const Dictionary* dictionary = asDictionary())
        for (const auto& [key, value] : *dictionary)  // added up: their order does not count
            result += combine(std::hash<std::string>{}(key), value.hash());
    return result;
}

std::string_view Value::kindName() const {
    static constexpr std::string_view names[] = {"none",    "boolean", "integer",    "number",
                                                 "decimal", "date",    "color",      "text",
                                                 "data",    "list",    "dictionary", "object"};
    return names[storage_.index()];
}

std::string Value::description() const {
    if (isNone()) return "none";
    if (const bool* value = asBool()) return *value ? "true" : "false";
    if (const std::int64_t* value = asInteger()) return std::to_string(*value);
    if (const double* value = asDouble()) return numberText(*value);
    if (const DecimalSeconds* value = asDecimal()) return decimalText(*value);
    if (const Date* value = asDate()) return orvane::description(*value);
    if (const std::string* value = asString()) return quotedText(*value);
    if (const Data* value = asData()) return "<" + std::to_string(value->size()) + " bytes>";
    if (const Dictionary* value = asDictionary()) return value->description();
    if (const Color* value = asColor())
        return "(" + numberText(value->red) + ", " + numberText(value->green) + ", " +
               numberText(value->blue) + ", " + numberText(value->alpha) + ")";
    if (const Array* value = asArray()) {
        std::string result = "(";
        for (const Value& element : *value) result += (result.size() > 1 ? ", " : "") + element.description();
        return result + ")";
    }
    return "<" + std::string(asObject()->keyTable().className()) + ">";
}

Dictionary::Dictionary(std::initializer_list<Entry> entries) {
    for (const Entry& entry : entries) set(entry.first, entry.second);
}

const Value* Dictionary::find(std::string_view key) const {
    for (const Entry& entry : entries_)
        if (entry.first == key) return &entry.second;
    return nullptr;
}

Value Dictionary::operator[](std::string_view key) const {
    const Value* value = find(key);
    return value ? *value : Value();
}

bool Dictionary::contains(std::string_view key) const { return find(key) != nullptr; }

void Dictionary::set(std::string_view key, Value value) {
    if (value.isNone()) return remove(key);
    for (Entry& entry : entries_) {
        if (entry.first != key) continue;
        entry.second = std::move(value);
        return;
    }
    entries_.emplace_back(key, std::move(value));
}

void Dictionary::remove(std::string_view key) {
    std::erase_if(entries_, [&](const Entry& entry) { return entry.first == key; });
}

std::string Dictionary::description() const {
    std::string result = "{";
    for (const auto& [key, value] : entries_) result += " " + key + " = " + value.description() + ";";
    return result + " }";
}

bool Dictionary::equals(const Dictionary& other) const {
    if (size() != other.size()) return false;
    for (const auto& [key, value] : entries_) {
        const Value* counterpart = other.find(key);
        if (!counterpart || !(*counterpart == value)) return false;
    }
    return true;
}

}  // namespace orvane
