#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "foundation/internal.h"
#include "persistence/entity_class.h"
#include "persistence/managed_object.h"
#include "persistence/model.h"
#include "persistence/persistent_store_coordinator.h"

namespace orvane {

class ContextState;
class ObjectStorage;
class TextBatch;

namespace sqlite {
class Statement;
}

/// Memory for objects of one size. Objects lie side by side in slabs, and a slab goes back to the system as
/// soon as the last object in it is gone.
class SlabAllocator {
  public:
    // Bytes of a slab.
    static constexpr std::size_t mediumSlab = 256 * 1024;
    static constexpr std::size_t hugeSlab = 2 * 1024 * 1024;  ///< a huge page of the usual processors

    /// The first mapped slab is a medium one, the others have the bytes of `largest`, one of the two above.
    /// The system may take milliseconds to find a huge page.
    SlabAllocator(std::size_t size, std::size_t alignment, std::size_t largest);
    ~SlabAllocator();
    SlabAllocator(const SlabAllocator&) = delete;
    SlabAllocator& operator=(const SlabAllocator&) = delete;

    void* allocate();
    void release(void* memory) noexcept;

  private:
    struct Slab;
    Slab* newSlab();
    Slab* mapSlab();
    void unmap(Slab* slab) noexcept;
    bool isInFirst(const void* cell) const;

    std::size_t largest_;  ///< mapped slabs are aligned to it, so that a cell's address tells its slab
    std::size_t cellSize_;
    std::size_t firstCell_;
    Slab* slabsWithRoom_ = nullptr;
    Slab* first_ = nullptr;  ///< small, from the heap, and kept
    Slab* spare_ = nullptr;
    Slab* lastMapped_ = nullptr;   ///< where memory was found last; perhaps given back since
    std::size_t mappedSlabs_ = 0;  ///< the spare one included
};

/// The way from a row's key to its object: keys are dense, so objects stand in pages found by the key's upper
/// part.
class ObjectDirectory {
  public:
    static constexpr std::int64_t pageSize = 512;

    ManagedObject* find(std::int64_t key) const;
    void set(std::int64_t key, ManagedObject* object);
    /// Removes the object from its key's place, if it stands there.
    void remove(std::int64_t key, const ManagedObject* object) noexcept;
    void clear();
    std::size_t size() const { return size_; }
    std::vector<ManagedObject*> all() const;
    /// Objects in the page of `key`, at that key and after it.
    std::vector<ManagedObject*> neighbours(std::int64_t key) const;

  private:
    struct Page {
        ManagedObject* objects[pageSize] = {};
        int count = 0;
    };
    Page* page(std::int64_t key) const;

    std::unordered_map<std::int64_t, std::unique_ptr<Page>> pages_;
    mutable std::int64_t lastIndex_ = 0;
    mutable Page* lastPage_ = nullptr;
    std::size_t size_ = 0;
};

/// Which values of a row are meant: texts and data can be left for later.
enum class RowPart { all, withoutTexts };

/// One stored property as rows are filled and written.
struct StoredColumn {
    std::size_t property;
    SlotKind kind;
    std::size_t offset;
    std::size_t destination;  ///< entity index of a to-one relationship

    bool isText() const { return kind == SlotKind::text || kind == SlotKind::data; }
};

/// The objects of one entity within one context.
class EntityTable {
  public:
    EntityTable(ObjectStorage& storage, const EntityDescription& entity, const EntityClass* objectClass,
                const ManagedObjectModel& model, std::size_t largestSlab);
    ~EntityTable();

    const EntityDescription& entity() const { return entity_; }
    ObjectStorage& storage() const { return storage_; }
    const std::vector<RowSlot>& slots() const { return slots_; }
    const std::vector<StoredColumn>& columns() const { return columns_; }
    const EntityClass* objectClass() const { return objectClass_; }
    /// What can be asked of the entity's objects by key.
    const KeyTable& keys() const { return objectClass_ ? *objectClass_->keys : *dynamicKeys_; }
    std::size_t dynamicRowSize() const { return dynamicRowSize_; }
    /// Relationship of a property index.
    const RelationshipDescription& relationship(std::size_t property) const {
        return entity_.relationships[property - entity_.attributes.size()];
    }
    /// Property index of the relationship's inverse in the entity at its other end.
    std::size_t inverseProperty(std::size_t property) const {
        return inverses_[property - entity_.attributes.size()].property;
    }
    std::size_t destinationEntity(std::size_t property) const {
        return inverses_[property - entity_.attributes.size()].entity;
    }

    ManagedObject* find(std::int64_t key) const { return directory_.find(key); }
    /// A new object without values under the key; nobody holds it yet.
    ManagedObject* create(std::int64_t key);
    ManagedObject& findOrCreate(std::int64_t key) {
        ManagedObject* object = directory_.find(key);
        return object ? *object : *create(key);
    }
    void changeKey(ManagedObject& object, std::int64_t key);
    /// Takes the object out of the directory: it can no longer be found.
    void forget(ManagedObject& object) noexcept;
    /// Destroys an object that nobody holds any more.
    void destroy(ManagedObject& object) noexcept;

    ObjectDirectory& directory() { return directory_; }
    const ObjectDirectory& directory() const { return directory_; }

    void* row(ManagedObject& object) const;
    template <class Slot>
    Slot& slot(ManagedObject& object, std::size_t offset) const {
        return *reinterpret_cast<Slot*>(static_cast<char*>(row(object)) + offset);
    }
    /// The value in a slot; to-one objects as objects, to-many as none.
    Value slotValue(const ManagedObject& object, std::size_t property) const;
    /// Stores an attribute's value as it is, converting numbers; throws WrongValueError.
    void setSlotValue(ManagedObject& object, std::size_t property, const Value& value);
    /// Empties every slot but those whose bit is set in `kept`.
    void clearRow(ManagedObject& object, std::uint64_t kept = 0);

    /// The properties of which `fill` wants the values.
    const std::vector<StoredColumn>& columns(RowPart part) const {
        return part == RowPart::all ? columns_ : scalarColumns_;
    }
    static bool isFilled(const ManagedObject& object, RowPart part) {
        const std::uint32_t state = object.state();
        return (state & ManagedObject::stateLoaded) != 0 &&
               (part == RowPart::withoutTexts || (state & ManagedObject::stateTextsLate) == 0);
    }
    /// Fills the object with what it lacks of the row a statement stands on (column 0 the key, then the
    /// part's properties in order), but for properties with unsaved changes. The object is alive afterwards,
    /// its texts once the batch is settled.
    void fill(ManagedObject& object, const sqlite::Statement& row, RowPart part, TextBatch& texts);
    /// Binds the stored properties whose bit is set, in order, from parameter `first` on. Texts are bound in
    /// place.
    void bind(const ManagedObject& object, sqlite::Statement& statement, int first,
              std::uint64_t columns) const;

  private:
    void layOutDynamicRow();

    struct Inverse {
        std::size_t entity;
        std::size_t property;
    };

    ObjectStorage& storage_;
    const EntityDescription& entity_;
    const EntityClass* objectClass_;
    std::vector<RowSlot> slots_;
    std::vector<StoredColumn> columns_;
    std::vector<StoredColumn> scalarColumns_;  ///< those of them that are neither text nor data
    std::vector<Inverse> inverses_;
    std::unique_ptr<KeyTable> dynamicKeys_;
    std::size_t dynamicRowSize_ = 0;
    ObjectDirectory directory_;
    SlabAllocator allocator_;
};

/// What outlives a context for as long as any of its objects is held: their memory and their texts. It
/// deletes itself when the context and the last object are gone.
class ObjectStorage {
  public:
    ObjectStorage(ContextState& context, const PersistentStoreCoordinator& coordinator,
                  std::size_t largestSlab);

    ContextState* context() const { return context_; }
    TextPool& texts() { return texts_; }
    EntityTable& table(std::size_t entityIndex) { return *tables_[entityIndex]; }
    const std::vector<std::unique_ptr<EntityTable>>& tables() const { return tables_; }

    void objectCreated() { ++holders_; }
    void objectDestroyed() noexcept {
        if (--holders_ == 0) delete this;
    }
    /// The context goes; the storage follows with the last object.
    void contextGone() noexcept {
        context_ = nullptr;
        objectDestroyed();
    }

  private:
    ~ObjectStorage() = default;

    ContextState* context_;
    std::shared_ptr<const void> model_;  // entity descriptions must outlive the objects
    TextPool texts_;
    std::vector<std::unique_ptr<EntityTable>> tables_;
    std::size_t holders_ = 1;  // the context itself
};

}  // namespace orvane
