#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/export.h"
#include "foundation/value.h"

namespace orvane {

/// A key that an object does not have was asked for or set; the message names class and key.
class ORVANE_EXPORT UnknownKeyError : public std::invalid_argument {
  public:
    UnknownKeyError(std::string_view className, std::string_view key);
};

/// A value of the wrong type was set by key; the message names class, key, what was expected and what came.
class ORVANE_EXPORT WrongValueError : public std::invalid_argument {
  public:
    WrongValueError(std::string_view className, std::string_view key, std::string_view expected,
                    const Value& given);
};

/// One key of a class: how it is read, how it is set (none for a computed key) and the key paths whose
/// changes change it.
struct Key {
    using Getter = Value (*)(const KeyedObject&);
    using Setter = void (*)(KeyedObject&, const Value&);

    std::string_view name;
    Getter get;
    Setter set = nullptr;
    std::vector<std::string_view> dependsOn = {};
};

/// The keys of one class, those of its base class included. Typed calls aside, this table is the one place
/// that tells key-value coding, observing, predicates and generic output what a class has.
class ORVANE_EXPORT KeyTable {
  public:
    /// Keys given here hide equally named keys of `base`; their dependencies are joined.
    KeyTable(std::string_view className, const KeyTable* base, std::vector<Key> keys);

    std::string_view className() const { return className_; }
    /// The key of that name, or none.
    const Key* find(std::string_view name) const;
    /// Every key, base class first.
    std::span<const Key> keys() const { return keys_; }
    /// Key paths whose change changes `name`, directly declared; empty for unknown keys.
    std::span<const std::string_view> keyPathsAffecting(std::string_view name) const;
    /// Every key that changes when `name` changes, `name` itself first: the transitive dependents whose
    /// declared path begins with it.
    std::vector<std::string_view> keysAffectedBy(std::string_view name) const;

  private:
    std::string_view className_;
    std::vector<Key> keys_;
    /// Places in `keys_`, by length and bytes of the name.
    std::vector<std::uint32_t> byName_;
};

}  // namespace orvane
