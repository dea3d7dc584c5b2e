#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "foundation/color.h"
#include "foundation/date.h"
#include "foundation/export.h"
#include "foundation/ref.h"

namespace orvane {

class KeyedObject;
class Dictionary;

/// Bytes of an attribute that is no text.
using Data = std::vector<std::uint8_t>;

/// Anything that a key can hold. Copies are cheap: collections are shared and never change once a value holds
/// them. An empty value stands for "none".
class ORVANE_EXPORT Value {
  public:
    using Array = std::vector<Value>;

    Value() = default;
    Value(std::nullopt_t) {}
    Value(std::nullptr_t) {}
    /// Booleans only: a pointer is no boolean.
    template <std::same_as<bool> T>
    Value(T value) : storage_(value) {}
    Value(int value) : storage_(std::int64_t{value}) {}
    Value(std::int64_t value) : storage_(value) {}
    /// NaN is no number that can be compared or stored: it counts as none.
    Value(double value);
    Value(DecimalSeconds value) : storage_(value) {}
    Value(Date value);
    Value(Color value) : storage_(value) {}
    Value(std::string value) : storage_(std::move(value)) {}
    Value(std::string_view value) : storage_(std::string(value)) {}
    Value(const char* value) : storage_(std::string(value)) {}
    Value(Data value);
    Value(Array value);
    Value(Dictionary value);
    template <class T>
    requires std::convertible_to<T*, KeyedObject*> Value(const Ref<T>& object)
        : Value(Ref<KeyedObject>(object)) {}
    Value(Ref<KeyedObject> object);
    template <class T>
    Value(const std::optional<T>& value) {
        if (value) *this = Value(*value);
    }
    template <class T>
    Value(const std::vector<Ref<T>>& objects) : Value(Array(objects.begin(), objects.end())) {}

    bool isNone() const { return std::holds_alternative<std::monostate>(storage_); }
    /// Boolean, integer, double or decimal seconds.
    bool isNumber() const;

    // Exact kinds: none when the value is of another kind.
    const bool* asBool() const { return std::get_if<bool>(&storage_); }
    const std::int64_t* asInteger() const { return std::get_if<std::int64_t>(&storage_); }
    const double* asDouble() const { return std::get_if<double>(&storage_); }
    const DecimalSeconds* asDecimal() const { return std::get_if<DecimalSeconds>(&storage_); }
    const Date* asDate() const { return std::get_if<Date>(&storage_); }
    const Color* asColor() const { return std::get_if<Color>(&storage_); }
    const std::string* asString() const { return std::get_if<std::string>(&storage_); }
    const Data* asData() const;
    const Array* asArray() const;
    const Dictionary* asDictionary() const;
    /// The object held, or none.
    Ref<KeyedObject> asObject() const;

    /// The number as a boolean (anything but zero); false for none and for what is no number.
    bool boolValue() const;
    /// The number truncated toward zero and held within 64 bits; 0 for none and for what is no number.
    std::int64_t integerValue() const;
    /// The number in double precision; 0 for none and for what is no number.
    double doubleValue() const;

    /// Same kind of thing and same value: numbers by value whatever their type, text byte by byte, objects by
    /// identity, none equals none.
    friend bool operator==(const Value& left, const Value& right) { return left.equals(right); }

    /// Equal values have equal hashes.
    std::size_t hash() const;

    /// Order of two values of one class (numbers, dates, texts, data): negative, zero or positive. None when
    /// the two have no order.
    std::optional<int> compare(const Value& other) const;

    /// Readable text for logs: texts in quotation marks, dates in ISO 8601, collections as lists.
    std::string description() const;

    /// Name of the kind, for error messages: "none", "boolean", "integer", "number", "text", "date"…
    std::string_view kindName() const;

  private:
    bool equals(const Value& other) const;

    std::variant<std::monostate, bool, std::int64_t, double, DecimalSeconds, Date, Color, std::string,
                 std::shared_ptr<const Data>, std::shared_ptr<const Array>, std::shared_ptr<const Dictionary>,
                 Ref<KeyedObject>>
        storage_;
};

/// String-keyed values in the order in which their keys were first set.
class ORVANE_EXPORT Dictionary {
  public:
    using Entry = std::pair<std::string, Value>;

    Dictionary() = default;
    Dictionary(std::initializer_list<Entry> entries);

    /// The value under the key; none when the key is absent.
    Value operator[](std::string_view key) const;
    bool contains(std::string_view key) const;
    /// Stores the value; storing none removes the key.
    void set(std::string_view key, Value value);
    void remove(std::string_view key);

    std::size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }
    auto begin() const { return entries_.begin(); }
    auto end() const { return entries_.end(); }

    /// A listing of the form `{ key = value; key = value; }`, in order.
    std::string description() const;

    /// Same keys with equal values, in any order.
    friend bool operator==(const Dictionary& left, const Dictionary& right) { return left.equals(right); }

  private:
    const Value* find(std::string_view key) const;
    bool equals(const Dictionary& other) const;

    std::vector<Entry> entries_;
};

}  // namespace orvane

template <>
struct std::hash<orvane::Value> {
    std::size_t operator()(const orvane::Value& value) const { return value.hash(); }
};

// A value can hold an object, so whoever uses values needs to see what an object is.
#include "foundation/keyed_object.h"
