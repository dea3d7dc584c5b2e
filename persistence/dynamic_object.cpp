#include "persistence/dynamic_object.h"

#include <new>

#include "persistence/identifier_set.h"
#include "persistence/object_table.h"

namespace orvane {

namespace {

/// Calls `visit` with each slot as what it is.
template <class Visitor>
void visitSlots(const EntityTable& table, std::byte* row, const Visitor& visit) {
    for (const RowSlot& place : table.slots()) {
        void* const address = row + place.offset;
        switch (place.kind) {
            case SlotKind::boolean:
                visit(static_cast<BooleanSlot*>(address));
                break;
            case SlotKind::integer32:
            case SlotKind::integer64:
                visit(static_cast<IntegerSlot*>(address));
                break;
            case SlotKind::decimal:
                visit(static_cast<DecimalSlot*>(address));
                break;
            case SlotKind::real:
                visit(static_cast<RealSlot*>(address));
                break;
            case SlotKind::date:
                visit(static_cast<DateSlot*>(address));
                break;
            case SlotKind::text:
            case SlotKind::data:
                visit(static_cast<TextSlot*>(address));
                break;
            case SlotKind::toOne:
                visit(static_cast<ToOneSlot*>(address));
                break;
            case SlotKind::toMany:
                visit(static_cast<ToManySlot*>(address));
                break;
        }
    }
}

}  // namespace

std::unique_ptr<KeyTable> DynamicObject::makeKeys(const EntityDescription& entity) {
    // `valueForKey` and `setValueForKey` below go by the property's index; the table only tells which keys
    // there are.
    std::vector<Key> keys;
    const auto add = [&](std::string_view name) {
        keys.push_back(
            Key{name, [](const KeyedObject&) { return Value(); }, [](KeyedObject&, const Value&) {}, {}});
    };
    for (const AttributeDescription& attribute : entity.attributes) add(attribute.name);
    for (const RelationshipDescription& relationship : entity.relationships) add(relationship.name);
    return std::make_unique<KeyTable>(entity.name, &ManagedObject::classKeyTable(), std::move(keys));
}

DynamicObject::DynamicObject(const EntityTable& table)
    : layout_(table), row_(std::make_unique<std::byte[]>(table.dynamicRowSize())) {
    visitSlots(layout_, row_.get(), []<class Slot>(Slot* slot) { new (slot) Slot; });
}

DynamicObject::~DynamicObject() {
    visitSlots(layout_, row_.get(), []<class Slot>(Slot* slot) { slot->~Slot(); });
}

const KeyTable& DynamicObject::keyTable() const { return layout_.keys(); }

Value DynamicObject::valueForKey(std::string_view key) const {
    if (const auto property = entity().propertyIndex(key)) return readProperty(*property);
    return ManagedObject::valueForKey(key);
}

void DynamicObject::setValueForKey(const Value& value, std::string_view key) {
    if (const auto property = entity().propertyIndex(key))
        writeProperty(*property, value);
    else
        ManagedObject::setValueForKey(value, key);
}

}  // namespace orvane
