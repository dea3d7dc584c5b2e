#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "foundation/keyed_object.h"

namespace orvane {

/// Helpers with which classes write their key tables, see `readWrite` and `readOnly`.
namespace keys {

/// Converts `value` to the parameter type of a setter. Throws WrongValueError naming `className` and `key`.
/// Absent stays absent for optional parameters and is an error for others. Numbers convert into each other
/// when nothing is lost: a boolean takes 0 and 1, an integer takes what is whole. Where doubles are involved
/// the nearest value is taken: a double takes any number, decimal seconds round a double to six decimals.
/// Nothing converts to or from text.
template <class Parameter>
Parameter convert(const Value& value, std::string_view className, std::string_view key);

ORVANE_EXPORT bool toBool(const Value&, std::string_view className, std::string_view key);
ORVANE_EXPORT std::int64_t toInteger(const Value&, std::string_view className, std::string_view key);
ORVANE_EXPORT double toDouble(const Value&, std::string_view className, std::string_view key);
ORVANE_EXPORT DecimalSeconds toDecimal(const Value&, std::string_view className, std::string_view key);
ORVANE_EXPORT Date toDate(const Value&, std::string_view className, std::string_view key);
ORVANE_EXPORT const std::string& toString(const Value&, std::string_view className, std::string_view key);
ORVANE_EXPORT const Data& toData(const Value&, std::string_view className, std::string_view key);
ORVANE_EXPORT Ref<KeyedObject> toObject(const Value&, std::string_view className, std::string_view key);
ORVANE_EXPORT const Value::Array& toArray(const Value&, std::string_view className, std::string_view key);
[[noreturn]] ORVANE_EXPORT void throwWrongObject(const Value&, std::string_view className,
                                                 std::string_view key);

template <class T>
struct IsOptional : std::false_type {};
template <class T>
struct IsOptional<std::optional<T>> : std::true_type {};
template <class T>
struct IsRef : std::false_type {};
template <class T>
struct IsRef<Ref<T>> : std::true_type {
    using Object = T;
};
template <class T>
struct IsVectorOfRef : std::false_type {};
template <class T>
struct IsVectorOfRef<std::vector<Ref<T>>> : std::true_type {
    using Object = T;
};

template <class Object>
Ref<Object> convertObject(const Value& value, std::string_view className, std::string_view key) {
    Ref<Object> object = refCast<Object>(toObject(value, className, key));
    if (!object) throwWrongObject(value, className, key);
    return object;
}

template <class Parameter>
Parameter convert(const Value& value, std::string_view className, std::string_view key) {
    if constexpr (std::is_same_v<Parameter, Value>) {
        return value;
    } else if constexpr (IsOptional<Parameter>::value) {
        if (value.isNone()) return std::nullopt;
        return convert<typename Parameter::value_type>(value, className, key);
    } else if constexpr (IsRef<Parameter>::value) {
        if (value.isNone()) return nullptr;
        return convertObject<typename IsRef<Parameter>::Object>(value, className, key);
    } else if constexpr (IsVectorOfRef<Parameter>::value) {
        Parameter result;
        for (const Value& element : toArray(value, className, key))
            result.push_back(
                convertObject<typename IsVectorOfRef<Parameter>::Object>(element, className, key));
        return result;
    } else if constexpr (std::is_same_v<Parameter, bool>) {
        return toBool(value, className, key);
    } else if constexpr (std::is_same_v<Parameter, double>) {
        return toDouble(value, className, key);
    } else if constexpr (std::is_same_v<Parameter, std::int64_t>) {
        return toInteger(value, className, key);
    } else if constexpr (std::is_same_v<Parameter, DecimalSeconds>) {
        return toDecimal(value, className, key);
    } else if constexpr (std::is_same_v<Parameter, Date>) {
        return toDate(value, className, key);
    } else if constexpr (std::is_same_v<Parameter, Data>) {
        return toData(value, className, key);
    } else {
        static_assert(std::is_convertible_v<std::string, Parameter> ||
                      std::is_convertible_v<std::string_view, Parameter>);
        return Parameter(toString(value, className, key));
    }
}

template <auto>
struct MemberOf;
template <class T, class Result, Result (T::*member)() const>
struct MemberOf<member> {
    using Class = T;
    static Value get(const KeyedObject& object) { return Value((static_cast<const T&>(object).*member)()); }
};
template <class T, class Parameter, void (T::*member)(Parameter)>
struct MemberOf<member> {
    using Class = T;
    static void set(KeyedObject& object, const Value& value, std::string_view key) {
        (static_cast<T&>(object).*
         member)(convert<std::remove_cvref_t<Parameter>>(value, object.keyTable().className(), key));
    }
};

/// A compile-time text, so that a key's setter knows the key's name for its error messages.
template <std::size_t N>
struct Name {
    char text[N]{};
    constexpr Name(const char (&literal)[N]) {
        for (std::size_t i = 0; i < N; ++i) text[i] = literal[i];
    }
    constexpr std::string_view view() const { return {text, N - 1}; }
};

/// A key that is read and set: `keys::readWrite<"name", &T::name, &T::setName>()`.
template <Name name, auto getter, auto setter>
Key readWrite(std::vector<std::string_view> dependsOn = {}) {
    return Key{
        name.view(), &MemberOf<getter>::get,
        [](KeyedObject& object, const Value& value) { MemberOf<setter>::set(object, value, name.view()); },
        std::move(dependsOn)};
}

/// A computed key: `keys::readOnly<"duration", &T::duration>({"recordings"})`.
template <Name name, auto getter>
Key readOnly(std::vector<std::string_view> dependsOn = {}) {
    return Key{name.view(), &MemberOf<getter>::get, nullptr, std::move(dependsOn)};
}

}  // namespace keys
}  // namespace orvane
