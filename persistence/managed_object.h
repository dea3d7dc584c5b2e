#pragma once

#include <concepts>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/keyed_object.h"
#include "persistence/entity_class.h"
#include "persistence/managed_object_id.h"
#include "persistence/row_slots.h"

namespace orvane {

class EntityTable;
class ManagedObjectContext;

/// An object of the graph: one row of the store as one context sees it. Objects are made by their context and
/// belong to its thread.
///
/// An object whose values were not read yet, or were let go, is a fault; reading or setting a value brings it
/// to life. When that fails, because the row is gone or the file cannot be read, its values read as absent.
/// An object that was deleted, reset or whose context is gone stays safe to hold: a deleted one shows the
/// values it had last, the others read as absent, and all ignore what is set.
class ORVANE_EXPORT ManagedObject : public KeyedObject {
  public:
    static const KeyTable& classKeyTable();

    ManagedObjectID objectID() const;
    /// None once the context is gone or was reset, and for a deleted object after the deletion was saved.
    ManagedObjectContext* managedObjectContext() const;
    const EntityDescription& entity() const;

    /// Whether no values are at hand: never read, refreshed, deleted, reset, or the context is gone.
    bool isFault() const { return (state() & stateLoaded) == 0 || !isUsable(); }
    bool isInserted() const { return state() & stateInserted; }
    /// Whether values or relationships changed since the last save and the object is neither new nor deleted.
    bool isUpdated() const { return changed_ != 0 && !isInserted() && !isDeleted(); }
    /// Whether the deletion is pending.
    bool isDeleted() const { return state() & stateDeleted; }
    bool hasChanges() const { return isInserted() || isDeleted() || changed_ != 0; }
    /// Whether the object can still be used through its context: not deleted, not reset.
    bool isUsable() const;

    /// The same stored object as an instance of the parent of its own context. None when the context has no
    /// parent, or the parent does not know the object (it was inserted here and never saved).
    Ref<ManagedObject> objectInMainContext() const;

    /// Runs once, when the object is inserted as new.
    virtual void awakeFromInsert() {}

    /// Brackets of a direct access to the stored value of `key`: the first brings a fault to life.
    void willAccessValueForKey(std::string_view key) const;
    void didAccessValueForKey(std::string_view) const {}
    /// The stored value, with no notice and no fault brought to life. Throws UnknownKeyError for a key that
    /// is not stored.
    Value primitiveValueForKey(std::string_view key) const;
    /// Stores a value; observers are not told, the change is saved all the same. Attributes only.
    void setPrimitiveValue(const Value& value, std::string_view key);

    /// Keys of the properties changed since the last save, in the order of the entity.
    std::vector<std::string_view> changedKeys() const;

    std::optional<Value> valueForCollectionOperator(std::string_view key, std::string_view operation,
                                                    std::string_view rest) const override;

  protected:
    ManagedObject() = default;
    ~ManagedObject() override;
    void dispose() noexcept override;

    // What the generated accessors are made of. `property` is the property's index within its entity.

    template <class Slot>
    auto read(const Slot& slot) const {
        if constexpr (std::same_as<Slot, TextSlot>)
            willRead();
        else
            willReadScalar();
        return slot.get();
    }
    template <class Slot, class V>
    void write(std::size_t property, Slot& slot, V value) {
        if (!beginChange(property)) return;
        const bool same = slot.get() == value;
        if (same) {
            endUnchanged(property);
            return;
        }
        const Value before = wantsOldValue() ? Value(slot.get()) : Value();
        assign(slot, std::move(value));
        endChange(property, before);
    }
    template <class T>
    Ref<T> readToOne(const ToOneSlot& slot) const {
        willReadScalar();
        return Ref<T>(static_cast<T*>(slot.get()));
    }
    void writeToOne(std::size_t property, ManagedObject* target);
    template <class T>
    std::vector<Ref<T>> readToMany(std::size_t property) const {
        std::vector<Ref<T>> result;
        for (Ref<ManagedObject>& object : toManyObjects(property))
            result.push_back(Ref<T>::adopt(static_cast<T*>(object.detach())));
        return result;
    }
    template <class T>
    void writeToMany(std::size_t property, const std::vector<Ref<T>>& objects) {
        replaceToMany(property, std::vector<Ref<ManagedObject>>(objects.begin(), objects.end()));
    }

    /// A property by its index, for objects without typed accessors. Attributes convert as key-value coding
    /// does.
    Value readProperty(std::size_t property) const;
    void writeProperty(std::size_t property, const Value& value);

  private:
    friend class ContextState;
    friend class EntityTable;
    template <class T>
    friend class ToManySet;

    enum State : std::uint32_t {
        stateLoaded = 1,
        stateInserted = 2,
        stateDeleted = 4,
        stateGone = 8,     ///< the deletion was saved, or the object was reset or never saved and discarded
        stateListed = 16,  ///< stands in its context's list of changed objects
        stateNew = 32,     ///< inserted within the present undo step
        stateRefreshed = 64,   ///< turned back into a fault by the host: read only when it is asked for
        stateTextsLate = 128,  ///< loaded but for its texts, and without changes
    };
    std::uint32_t state() const { return reserved_; }

    void willRead() const {
        if ((reserved_ & (stateLoaded | stateTextsLate)) != stateLoaded) [[unlikely]]
            const_cast<ManagedObject*>(this)->fire();
    }
    /// For what is no text.
    void willReadScalar() const {
        if ((reserved_ & stateLoaded) == 0) [[unlikely]]
            const_cast<ManagedObject*>(this)->fire();
    }
    void fire();
    bool beginChange(std::size_t property);
    void endChange(std::size_t property, const Value& before);
    void endUnchanged(std::size_t property);
    bool wantsOldValue() const;
    template <class Slot, class V>
    void assign(Slot& slot, V value) {
        if constexpr (std::same_as<Slot, TextSlot>)
            slot.set(textPool(), value);
        else
            slot.set(value);
    }
    TextPool& textPool() const;
    std::vector<Ref<ManagedObject>> toManyObjects(std::size_t property) const;
    void replaceToMany(std::size_t property, const std::vector<Ref<ManagedObject>>& objects);
    void addToMany(std::size_t property, ManagedObject& object);
    void removeFromMany(std::size_t property, ManagedObject& object);

    EntityTable* table_ = nullptr;
    std::int64_t key_ = 0;
    std::uint64_t changed_ = 0;
};

/// A live set over a to-many relationship: reads show the present members, additions and removals go through
/// the relationship, so the other ends follow at once.
template <class T>
class ToManySet {
  public:
    ToManySet(ManagedObject& owner, std::size_t property) : owner_(&owner), property_(property) {}

    std::vector<Ref<T>> allObjects() const {
        std::vector<Ref<T>> result;
        for (Ref<ManagedObject>& object : owner_->toManyObjects(property_))
            result.push_back(Ref<T>::adopt(static_cast<T*>(object.detach())));
        return result;
    }
    std::size_t count() const { return owner_->toManyObjects(property_).size(); }
    bool contains(const T& object) const {
        for (const Ref<T>& member : allObjects())
            if (member.get() == &object) return true;
        return false;
    }
    void add(T& object) { owner_->addToMany(property_, object); }
    void remove(T& object) { owner_->removeFromMany(property_, object); }

  private:
    Ref<ManagedObject> owner_;
    std::size_t property_;
};

}  // namespace orvane
