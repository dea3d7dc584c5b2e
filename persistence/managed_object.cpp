#include "persistence/managed_object.h"

#include "foundation/key_conversion.h"
#include "persistence/context_state.h"
#include "persistence/identifier_set.h"
#include "persistence/object_table.h"
#include "persistence/sqlite/sql_compiler.h"

namespace orvane {

ToManySlot::ToManySlot() = default;
ToManySlot::~ToManySlot() = default;

void ToOneSlot::set(ManagedObject* target) {
    if (target) target->retain();
    if (ManagedObject* old = std::exchange(target_, target)) old->release();
}

const KeyTable& ManagedObject::classKeyTable() {
    static const KeyTable table{"ManagedObject", nullptr, {}};
    return table;
}

ManagedObject::~ManagedObject() = default;

void ManagedObject::dispose() noexcept { table_->destroy(*this); }

ManagedObjectID ManagedObject::objectID() const {
    const ContextState* context = table_->storage().context();
    return context ? context->identifierOf(*this) : ManagedObjectID(&entity(), nullptr, key_);
}

ManagedObjectContext* ManagedObject::managedObjectContext() const {
    if (state() & stateGone) return nullptr;
    const ContextState* context = table_->storage().context();
    return context ? &context->owner() : nullptr;
}

const EntityDescription& ManagedObject::entity() const { return table_->entity(); }

bool ManagedObject::isUsable() const {
    return (state() & (stateGone | stateDeleted)) == 0 && table_->storage().context() != nullptr;
}

Ref<ManagedObject> ManagedObject::objectInMainContext() const {
    const ManagedObjectContext* context = managedObjectContext();
    ManagedObjectContext* parent = context ? context->parentContext() : nullptr;
    if (!parent) return nullptr;
    // The identifier goes by way of its text, so that only what the parent's own store knows is found.
    const auto identifier = parent->persistentStoreCoordinator()->managedObjectIDForURIRepresentation(
        objectID().URIRepresentation());
    return identifier ? parent->existingObjectWithID(*identifier) : nullptr;
}

void ManagedObject::fire() {
    ContextState* context = table_->storage().context();
    if (context && (state() & stateGone) == 0) context->fire(*this);
}

void ManagedObject::willAccessValueForKey(std::string_view) const { willRead(); }

Value ManagedObject::primitiveValueForKey(std::string_view key) const {
    const auto property = entity().propertyIndex(key);
    if (!property) throw UnknownKeyError(keyTable().className(), key);
    if (state() & stateTextsLate) willRead();
    return table_->slotValue(*this, *property);
}

void ManagedObject::setPrimitiveValue(const Value& value, std::string_view key) {
    const auto property = entity().propertyIndex(key);
    if (!property || *property >= entity().attributes.size())
        throw UnknownKeyError(keyTable().className(), key);
    ContextState* context = isUsable() ? table_->storage().context() : nullptr;
    if (!context) return;
    willRead();
    Value before = wantsOldValue() ? table_->slotValue(*this, *property) : Value();
    table_->setSlotValue(*this, *property, value);
    context->noteChange(*this, *property, before);
}

std::vector<std::string_view> ManagedObject::changedKeys() const {
    std::vector<std::string_view> result;
    for (std::size_t i = 0; i < table_->slots().size(); ++i)
        if (changed_ >> i & 1) result.push_back(table_->slots()[i].name);
    return result;
}

std::optional<Value> ManagedObject::valueForCollectionOperator(std::string_view key,
                                                               std::string_view operation,
                                                               std::string_view rest) const {
    const auto property = entity().propertyIndex(key);
    if (!property || table_->slots()[*property].kind != SlotKind::toMany || !isUsable()) return std::nullopt;
    return table_->storage().context()->aggregate(*this, *property, operation, rest);
}

bool ManagedObject::beginChange(std::size_t property) {
    if (!isUsable()) return false;
    table_->storage().context()->checkThread();
    willRead();
    if (isObserved()) willChangeValueForKey(table_->slots()[property].name);
    return true;
}

void ManagedObject::endChange(std::size_t property, const Value& before) {
    table_->storage().context()->noteChange(*this, property, before);
    if (isObserved()) didChangeValueForKey(table_->slots()[property].name);
}

void ManagedObject::endUnchanged(std::size_t property) {
    if (isObserved()) didChangeValueForKey(table_->slots()[property].name);
}

bool ManagedObject::wantsOldValue() const { return table_->storage().context()->wantsOldValue(*this); }

TextPool& ManagedObject::textPool() const { return table_->storage().texts(); }

void ManagedObject::writeToOne(std::size_t property, ManagedObject* target) {
    if (isUsable()) table_->storage().context()->setToOne(*this, property, target);
}

std::vector<Ref<ManagedObject>> ManagedObject::toManyObjects(std::size_t property) const {
    if (!isUsable()) return {};
    return table_->storage().context()->toManyObjects(const_cast<ManagedObject&>(*this), property);
}

void ManagedObject::replaceToMany(std::size_t property, const std::vector<Ref<ManagedObject>>& objects) {
    if (isUsable()) table_->storage().context()->replaceToMany(*this, property, objects);
}

void ManagedObject::addToMany(std::size_t property, ManagedObject& object) {
    if (isUsable()) table_->storage().context()->setToOne(object, table_->inverseProperty(property), this);
}

void ManagedObject::removeFromMany(std::size_t property, ManagedObject& object) {
    if (!isUsable()) return;
    const std::size_t inverse = table_->inverseProperty(property);
    object.willRead();
    const EntityTable& table = *object.table_;
    if (table.slot<ToOneSlot>(object, table.slots()[inverse].offset).get() == this)
        table_->storage().context()->setToOne(object, inverse, nullptr);
}

Value ManagedObject::readProperty(std::size_t property) const {
    if (table_->slots()[property].kind == SlotKind::toMany) return Value(toManyObjects(property));
    willRead();
    return table_->slotValue(*this, property);
}

void ManagedObject::writeProperty(std::size_t property, const Value& value) {
    const RowSlot& slot = table_->slots()[property];
    const std::string_view className = keyTable().className();
    if (slot.kind == SlotKind::toOne) {
        const auto target = keys::convert<Ref<ManagedObject>>(value, className, slot.name);
        writeToOne(property, target.get());
    } else if (slot.kind == SlotKind::toMany) {
        replaceToMany(property, keys::convert<std::vector<Ref<ManagedObject>>>(value, className, slot.name));
    } else if (beginChange(property)) {
        const Value before = table_->slotValue(*this, property);
        try {
            table_->setSlotValue(*this, property, value);
        } catch (...) {
            endUnchanged(property);
            throw;
        }
        if (table_->slotValue(*this, property) == before)
            endUnchanged(property);
        else
            endChange(property, before);
    }
}

std::optional<std::int64_t> sqlite::keyOfStoredObject(const Value& value, const EntityDescription& entity) {
    const auto object = refCast<ManagedObject>(value.asObject());
    if (!object || &object->entity() != &entity) return std::nullopt;
    const ManagedObjectID identifier = object->objectID();
    if (identifier.isTemporaryID()) return std::nullopt;
    return identifier.key();
}

}  // namespace orvane
