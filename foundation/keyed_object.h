#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/key_table.h"

namespace orvane {

class KeyTable;
class ObserverList;

/// An object whose values can be read, set and observed by key.
///
/// Key paths are keys joined by full stops. A key that names a collection may be followed by a collection
/// operator: "@count"; or "@sum", "@max", "@min", "@avg", "@unionOfObjects", "@distinctUnionOfObjects"
/// followed by the key path that each element is asked for (the elements themselves when nothing follows).
/// Absent answers are left out. "@sum" of integers is an integer and of decimals a decimal while it fits,
/// else a double; of nothing 0. "@avg" of decimals is a decimal rounded to microseconds, else a double; of
/// nothing 0.0. "@max" and "@min" of nothing are none. "@distinctUnionOfObjects" keeps the first of equal
/// answers, in order. Reading a further key from a collection asks every element and yields the list of what
/// they answer, absent answers left out; reading from none yields none.
class ORVANE_EXPORT KeyedObject : public RefCounted {
  public:
    KeyedObject();
    ~KeyedObject() override;

    virtual const KeyTable& keyTable() const = 0;

    /// The value under one key. Throws UnknownKeyError.
    virtual Value valueForKey(std::string_view key) const;
    /// Stores the value through the key's setter, which announces the change. Throws UnknownKeyError when
    /// there is no such key or it is read-only, WrongValueError when the key cannot hold the value.
    virtual void setValueForKey(const Value& value, std::string_view key);

    Value valueForKeyPath(std::string_view keyPath) const;
    /// Sets the last key of the path on the object that the keys before it lead to; nothing happens when they
    /// lead to none.
    void setValueForKeyPath(const Value& value, std::string_view keyPath);

    /// Answers `key.@operation.rest` (`operation` without its "@") without building the collection; none when
    /// the object cannot, and the elements are then asked one by one.
    virtual std::optional<Value> valueForCollectionOperator(std::string_view key, std::string_view operation,
                                                            std::string_view rest) const;

    /// A change of `key` is announced as a pair around the change: observers of the key, and of every key
    /// that depends on it, see the value before at the first and the value after at the second. Pairs nest:
    /// observers are told at the end of the outermost one that concerns them, whether or not the value
    /// differs then. An object that nobody observes pays one pointer test.
    void willChangeValueForKey(std::string_view key);
    void didChangeValueForKey(std::string_view key);

    bool isObserved() const { return observers_ != nullptr; }

    /// For `observe`; made on first use.
    ObserverList& observerList();
    ObserverList* existingObserverList() const { return observers_.get(); }
    /// Lets go of the list once nobody observes any more.
    void dropObserverList();

  private:
    std::unique_ptr<ObserverList> observers_;
};

/// Value of a key path asked of any value: objects by their keys, dictionaries by theirs (an absent key is
/// none), collections element by element or through a collection operator. Throws UnknownKeyError for an
/// object without the key and for a scalar.
ORVANE_EXPORT Value valueForKeyPath(const Value& root, std::string_view keyPath);

/// Applies a collection operator, given without its "@", to a list. Throws UnknownKeyError for an operator
/// that there is not, WrongValueError when something that is no number is added up.
ORVANE_EXPORT Value collectionOperator(std::string_view operation, const Value::Array& elements,
                                       std::string_view rest);

}  // namespace orvane
