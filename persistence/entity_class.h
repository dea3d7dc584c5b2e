#pragma once

#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <vector>

#include "foundation/keyed_object.h"
#include "persistence/row_slots.h"

namespace orvane {

class ManagedObject;

/// Stored properties of one row as a derived value sees them while the file is read, without an object.
class StoredRow {
  public:
    virtual std::optional<bool> boolean(std::size_t input) const = 0;
    virtual std::optional<std::int64_t> integer(std::size_t input) const = 0;
    virtual std::optional<double> real(std::size_t input) const = 0;
    virtual std::optional<Date> date(std::size_t input) const = 0;
    virtual std::optional<std::string_view> text(std::size_t input) const = 0;

  protected:
    ~StoredRow() = default;
};

/// A derived value in decimal seconds that depends on stored attributes of its own row alone. Declaring it
/// lets sums over many rows be computed where the rows are, in the file.
struct DerivedSeconds {
    std::string_view key;
    std::vector<std::string_view> inputs;
    DecimalSeconds (*compute)(const StoredRow& row);
};

/// What a context must know of a C++ class to make objects of it and to fill them from the file.
struct EntityClass {
    std::string_view className;
    std::size_t size;
    std::size_t alignment;
    ManagedObject* (*construct)(void* memory);
    void* (*row)(ManagedObject& object);
    const KeyTable* keys;
    /// In the order of the model's properties.
    std::span<const RowSlot> slots;
    std::span<const DerivedSeconds> derived;
};

/// The description of `T`, a class over a generated base.
template <class T>
const EntityClass& entityClass() {
    static const EntityClass result{
        T::className(),
        sizeof(T),
        alignof(T),
        [](void* memory) -> ManagedObject* { return new (memory) T; },
        [](ManagedObject& object) -> void* { return static_cast<T&>(object).rowAddress(); },
        &T::classKeyTable(),
        T::rowSlots(),
        T::derivedSeconds(),
    };
    return result;
}

}  // namespace orvane
