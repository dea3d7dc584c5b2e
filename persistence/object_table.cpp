#include "persistence/object_table.h"

#include <new>

#include "foundation/key_conversion.h"
#include "persistence/dynamic_object.h"
#include "persistence/identifier_set.h"

namespace orvane {

namespace {

SlotKind slotKindOf(AttributeType type) {
    switch (type) {
        case AttributeType::boolean:
            return SlotKind::boolean;
        case AttributeType::integer32:
            return SlotKind::integer32;
        case AttributeType::integer64:
            return SlotKind::integer64;
        case AttributeType::real:
            return SlotKind::real;
        case AttributeType::decimal:
            return SlotKind::decimal;
        case AttributeType::date:
            return SlotKind::date;
        case AttributeType::text:
            return SlotKind::text;
        case AttributeType::data:
            return SlotKind::data;
    }
    return SlotKind::text;
}

std::size_t slotSize(SlotKind kind) {
    switch (kind) {
        case SlotKind::boolean:
            return sizeof(BooleanSlot);
        case SlotKind::integer32:
        case SlotKind::integer64:
            return sizeof(IntegerSlot);
        case SlotKind::decimal:
            return sizeof(DecimalSlot);
        case SlotKind::real:
            return sizeof(RealSlot);
        case SlotKind::date:
            return sizeof(DateSlot);
        case SlotKind::text:
        case SlotKind::data:
            return sizeof(TextSlot);
        case SlotKind::toOne:
            return sizeof(ToOneSlot);
        case SlotKind::toMany:
            return sizeof(ToManySlot);
    }
    return 0;
}

std::int64_t pageIndex(std::int64_t key) { return key >> 9; }
std::size_t placeInPage(std::int64_t key) {
    return static_cast<std::size_t>(key & (ObjectDirectory::pageSize - 1));
}

}  // namespace

ObjectDirectory::Page* ObjectDirectory::page(std::int64_t key) const {
    const std::int64_t index = pageIndex(key);
    if (lastPage_ && lastIndex_ == index) return lastPage_;
    const auto found = pages_.find(index);
    if (found == pages_.end()) return nullptr;
    lastIndex_ = index;
    lastPage_ = found->second.get();
    return lastPage_;
}

ManagedObject* ObjectDirectory::find(std::int64_t key) const {
    const Page* place = page(key);
    return place ? place->objects[placeInPage(key)] : nullptr;
}

void ObjectDirectory::set(std::int64_t key, ManagedObject* object) {
    Page* place = page(key);
    if (!place) {
        lastIndex_ = pageIndex(key);
        lastPage_ = place = (pages_[lastIndex_] = std::make_unique<Page>()).get();
    }
    place->objects[placeInPage(key)] = object;
    ++place->count;
    ++size_;
}

void ObjectDirectory::remove(std::int64_t key, const ManagedObject* object) noexcept {
    Page* place = page(key);
    if (!place || place->objects[placeInPage(key)] != object) return;
    place->objects[placeInPage(key)] = nullptr;
    --size_;
    if (--place->count > 0) return;
    lastPage_ = nullptr;
    pages_.erase(pageIndex(key));
}

void ObjectDirectory::clear() {
    pages_.clear();
    lastPage_ = nullptr;
    size_ = 0;
}

std::vector<ManagedObject*> ObjectDirectory::all() const {
    std::vector<ManagedObject*> result;
    result.reserve(size_);
    for (const auto& [index, place] : pages_)
        for (ManagedObject* object : place->objects)
            if (object) result.push_back(object);
    return result;
}

std::vector<ManagedObject*> ObjectDirectory::neighbours(std::int64_t key) const {
    std::vector<ManagedObject*> result;
    if (const Page* place = page(key))
        for (std::size_t i = placeInPage(key); i < static_cast<std::size_t>(pageSize); ++i)
            if (place->objects[i]) result.push_back(place->objects[i]);
    return result;
}

EntityTable::EntityTable(ObjectStorage& storage, const EntityDescription& entity,
                         const EntityClass* objectClass, const ManagedObjectModel& model,
                         std::size_t largestSlab)
    : storage_(storage),
      entity_(entity),
      objectClass_(objectClass),
      allocator_(objectClass ? objectClass->size : sizeof(DynamicObject),
                 objectClass ? objectClass->alignment : alignof(DynamicObject), largestSlab) {
    if (objectClass_)
        slots_.assign(objectClass_->slots.begin(), objectClass_->slots.end());
    else
        layOutDynamicRow();
    for (std::size_t i = 0; i < entity_.relationships.size(); ++i) {
        const RelationshipDescription& relationship = entity_.relationships[i];
        const EntityDescription& destination = destinationOf(model, relationship);
        inverses_.push_back({destination.index, *destination.propertyIndex(relationship.inverse)});
    }
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        if (slots_[i].kind == SlotKind::toMany) continue;
        const std::size_t destination = slots_[i].kind == SlotKind::toOne ? destinationEntity(i) : 0;
        columns_.push_back({i, slots_[i].kind, slots_[i].offset, destination});
        if (!columns_.back().isText()) scalarColumns_.push_back(columns_.back());
    }
}

EntityTable::~EntityTable() = default;

void EntityTable::layOutDynamicRow() {
    const auto place = [this](std::string_view name, SlotKind kind) {
        slots_.push_back({name, kind, dynamicRowSize_});
        dynamicRowSize_ += (slotSize(kind) + 7) / 8 * 8;
    };
    for (const AttributeDescription& attribute : entity_.attributes)
        place(attribute.name, slotKindOf(attribute.type));
    for (const RelationshipDescription& relationship : entity_.relationships)
        place(relationship.name, relationship.toMany ? SlotKind::toMany : SlotKind::toOne);
    dynamicKeys_ = DynamicObject::makeKeys(entity_);
}

ManagedObject* EntityTable::create(std::int64_t key) {
    void* memory = allocator_.allocate();
    ManagedObject* object =
        objectClass_ ? objectClass_->construct(memory) : new (memory) DynamicObject(*this);
    object->table_ = this;
    object->key_ = key;
    directory_.set(key, object);
    storage_.objectCreated();
    return object;
}

void EntityTable::changeKey(ManagedObject& object, std::int64_t key) {
    directory_.remove(object.key_, &object);
    object.key_ = key;
    directory_.set(key, &object);
}

void EntityTable::forget(ManagedObject& object) noexcept { directory_.remove(object.key_, &object); }

void EntityTable::destroy(ManagedObject& object) noexcept {
    forget(object);
    ObjectStorage& storage = storage_;
    object.~ManagedObject();
    allocator_.release(&object);
    storage.objectDestroyed();
}

void* EntityTable::row(ManagedObject& object) const {
    return objectClass_ ? objectClass_->row(object) : static_cast<DynamicObject&>(object).rowAddress();
}

Value EntityTable::slotValue(const ManagedObject& constObject, std::size_t property) const {
    auto& object = const_cast<ManagedObject&>(constObject);
    const RowSlot& place = slots_[property];
    switch (place.kind) {
        case SlotKind::boolean:
            return slot<BooleanSlot>(object, place.offset).get();
        case SlotKind::integer32:
        case SlotKind::integer64:
            return slot<IntegerSlot>(object, place.offset).get();
        case SlotKind::decimal:
            return slot<DecimalSlot>(object, place.offset).get();
        case SlotKind::real:
            return slot<RealSlot>(object, place.offset).get();
        case SlotKind::date:
            return slot<DateSlot>(object, place.offset).get();
        case SlotKind::text:
            return slot<TextSlot>(object, place.offset).get();
        case SlotKind::data: {
            const auto bytes = slot<TextSlot>(object, place.offset).get();
            return bytes ? Value(Data(bytes->begin(), bytes->end())) : Value();
        }
        case SlotKind::toOne:
            return Ref<KeyedObject>(slot<ToOneSlot>(object, place.offset).get());
        case SlotKind::toMany:
            return {};
    }
    return {};
}

void EntityTable::setSlotValue(ManagedObject& object, std::size_t property, const Value& value) {
    const RowSlot& place = slots_[property];
    const std::string_view className = object.keyTable().className();
    const auto convert = [&]<class T>(std::optional<T>) {
        return keys::convert<std::optional<T>>(value, className, place.name);
    };
    switch (place.kind) {
        case SlotKind::boolean:
            slot<BooleanSlot>(object, place.offset).set(convert(std::optional<bool>()));
            break;
        case SlotKind::integer32:
        case SlotKind::integer64:
            slot<IntegerSlot>(object, place.offset).set(convert(std::optional<std::int64_t>()));
            break;
        case SlotKind::decimal:
            slot<DecimalSlot>(object, place.offset).set(convert(std::optional<DecimalSeconds>()));
            break;
        case SlotKind::real:
            slot<RealSlot>(object, place.offset).set(convert(std::optional<double>()));
            break;
        case SlotKind::date:
            slot<DateSlot>(object, place.offset).set(convert(std::optional<Date>()));
            break;
        case SlotKind::text:
            slot<TextSlot>(object, place.offset)
                .set(storage_.texts(), convert(std::optional<std::string_view>()));
            break;
        case SlotKind::data: {
            std::optional<std::string_view> bytes;
            if (!value.isNone()) {
                const Data& data = keys::toData(value, className, place.name);
                bytes.emplace(reinterpret_cast<const char*>(data.data()), data.size());
            }
            slot<TextSlot>(object, place.offset).set(storage_.texts(), bytes);
            break;
        }
        case SlotKind::toOne:
        case SlotKind::toMany:
            break;
    }
}

void EntityTable::clearRow(ManagedObject& object, std::uint64_t kept) {
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        if (kept >> i & 1) continue;
        const RowSlot& place = slots_[i];
        if (place.kind == SlotKind::toOne)
            slot<ToOneSlot>(object, place.offset).set(nullptr);
        else if (place.kind == SlotKind::toMany)
            slot<ToManySlot>(object, place.offset).identifiers.reset();
        else
            setSlotValue(object, i, Value());
    }
}

ObjectStorage::ObjectStorage(ContextState& context, const PersistentStoreCoordinator& coordinator,
                             std::size_t largestSlab)
    : context_(&context), model_(coordinator.sharedModel()) {
    for (const EntityDescription& entity : coordinator.model().entities())
        tables_.push_back(std::make_unique<EntityTable>(*this, entity, coordinator.classOf(entity),
                                                        coordinator.model(), largestSlab));
}

}  // namespace orvane
