#include <stdexcept>

#include "persistence/context_state.h"
#include "persistence/identifier_set.h"

namespace orvane {

void ContextState::setParent(ManagedObjectContext& parent) {
    ContextState& parentState = parent.state();
    if (parentState.parent_) throw std::logic_error("the parent of a context must itself have no parent");
    if (storage_) throw std::logic_error("the parent must be set before the context is used");
    parentState.checkThread();
    if (!parentState.shared_)
        parentState.shared_ =
            std::make_shared<ParentChanges>(parentState.coordinator_->model().entities().size());
    parent_ = &parent;
    fromParent_ = parentState.shared_;
    setCoordinator(parentState.coordinator_);
    parentState.publish();
}

RowSnapshot ContextState::snapshotOf(const ManagedObject& object) const {
    RowSnapshot result;
    result.changed = object.changed_;
    result.inserted = object.isInserted();
    result.deleted = object.isDeleted();
    for (std::size_t i = 0; i < object.table_->slots().size(); ++i) {
        Value value = object.table_->slotValue(object, i);
        if (object.table_->slots()[i].kind == SlotKind::toOne) {
            const auto target = refCast<ManagedObject>(value.asObject());
            value = target && target->isUsable() ? Value(target->key_) : Value();
        }
        result.values.push_back(std::move(value));
    }
    return result;
}

void ContextState::publish() {
    if (!shared_ || shared_.use_count() == 1) return;
    const std::lock_guard lock(shared_->mutex);
    publishLocked();
}

void ContextState::publishLocked() {
    for (EntityChanges& changes : shared_->unsaved) changes.clear();
    for (const Ref<ManagedObject>& object : listed_)
        if (object->hasChanges())
            shared_->unsaved[object->entity().index].insert_or_assign(object->key_, snapshotOf(*object));
    // What children saved and the parent did not take in yet is on top.
    for (const auto& save : shared_->inbox)
        for (std::size_t i = 0; i < save.size(); ++i)
            for (const auto& [key, snapshot] : save[i]) shared_->unsaved[i].insert_or_assign(key, snapshot);
}

std::int64_t ContextState::permanentKeyOf(std::size_t entityIndex, std::int64_t temporaryKey) {
    const auto& changes = fromParent_ ? fromParent_ : shared_;
    if (!changes) return temporaryKey;
    const std::lock_guard lock(changes->mutex);
    const auto found = changes->permanentKeys[entityIndex].find(temporaryKey);
    return found == changes->permanentKeys[entityIndex].end() ? temporaryKey : found->second;
}

std::optional<bool> ContextState::fillFromParent(ManagedObject& object) {
    const std::size_t entityIndex = object.entity().index;
    if (object.key_ < 0) {
        const std::int64_t permanent = permanentKeyOf(entityIndex, object.key_);
        if (permanent > 0 && !object.table_->find(permanent)) object.table_->changeKey(object, permanent);
    }
    const std::lock_guard lock(fromParent_->mutex);
    const EntityChanges& changes = fromParent_->unsaved[entityIndex];
    const auto found = changes.find(object.key_);
    if (found == changes.end()) return std::nullopt;
    if (found->second.deleted) return false;
    applySnapshot(object, found->second);
    return true;
}

void ContextState::applySnapshot(ManagedObject& object, const RowSnapshot& snapshot) {
    EntityTable& entityTable = *object.table_;
    for (std::size_t i = 0; i < entityTable.slots().size(); ++i) {
        if (object.changed_ >> i & 1) continue;
        const RowSlot& place = entityTable.slots()[i];
        if (place.kind == SlotKind::toOne) {
            const std::int64_t* key = snapshot.values[i].asInteger();
            entityTable.slot<ToOneSlot>(object, place.offset)
                .set(key ? &storage_->table(entityTable.destinationEntity(i)).findOrCreate(*key) : nullptr);
        } else if (place.kind != SlotKind::toMany) {
            entityTable.setSlotValue(object, i, snapshot.values[i]);
        }
    }
    object.reserved_ |= ManagedObject::stateLoaded;
    object.reserved_ &= ~(ManagedObject::stateRefreshed | ManagedObject::stateTextsLate);
}

bool ContextState::saveToParent() {
    const std::vector<Ref<ManagedObject>> saved = std::exchange(listed_, {});
    std::vector<Ref<ManagedObject>> inserted;
    {
        const std::lock_guard lock(fromParent_->mutex);
        std::vector<EntityChanges> handed(fromParent_->unsaved.size());
        for (const Ref<ManagedObject>& object : saved) {
            object->reserved_ &= ~ManagedObject::stateListed;
            if (!object->hasChanges()) continue;
            const std::size_t entityIndex = object->entity().index;
            const RowSnapshot snapshot = snapshotOf(*object);
            fromParent_->unsaved[entityIndex].insert_or_assign(object->key_, snapshot);
            handed[entityIndex].insert_or_assign(object->key_, snapshot);
        }
        fromParent_->inbox.push_back(std::move(handed));
    }
    for (const Ref<ManagedObject>& object : saved) {
        if (object->isInserted()) inserted.push_back(object);
        if (object->isDeleted()) {
            object->reserved_ |= ManagedObject::stateGone;
            object->table_->forget(*object);
        }
        object->reserved_ &= ~(ManagedObject::stateInserted | ManagedObject::stateNew);
        object->changed_ = 0;
    }
    postDidSave(saved, inserted);
    return true;
}

void ContextState::absorbInbox() {
    if (!shared_) return;
    std::vector<std::vector<EntityChanges>> inbox;
    {
        const std::lock_guard lock(shared_->mutex);
        inbox.swap(shared_->inbox);
    }
    for (const auto& save : inbox) {
        // New objects first: changed ones may lead to them.
        for (std::size_t i = 0; i < save.size(); ++i)
            for (const auto& [key, snapshot] : save[i])
                if (snapshot.inserted && !snapshot.deleted && !storage_->table(i).find(key)) {
                    const Ref<ManagedObject> object(storage_->table(i).create(key));
                    object->reserved_ |= ManagedObject::stateLoaded | ManagedObject::stateInserted;
                    list(*object);
                    noticeInserted_.push_back(object);
                }
        for (std::size_t i = 0; i < save.size(); ++i)
            for (const auto& [key, snapshot] : save[i]) takeIn(storage_->table(i), key, snapshot);
    }
    if (!inbox.empty()) publish();
}

void ContextState::takeIn(EntityTable& entityTable, std::int64_t key, const RowSnapshot& snapshot) {
    const std::size_t entityIndex = entityTable.entity().index;
    if (key < 0) key = permanentKeyOf(entityIndex, key);
    const Ref<ManagedObject> object(&entityTable.findOrCreate(key));
    if (snapshot.deleted) {
        deleteObject(*object);
        return;
    }
    for (std::size_t i = 0; i < entityTable.slots().size(); ++i) {
        if ((snapshot.changed >> i & 1) == 0) continue;
        if (entityTable.slots()[i].kind != SlotKind::toOne) {
            object->writeProperty(i, snapshot.values[i]);
            continue;
        }
        const std::int64_t* target = snapshot.values[i].asInteger();
        const std::size_t destination = entityTable.destinationEntity(i);
        const std::int64_t targetKey = target && *target < 0 ? permanentKeyOf(destination, *target)
                                       : target              ? *target
                                                             : 0;
        setToOne(*object, i, target ? &storage_->table(destination).findOrCreate(targetKey) : nullptr);
    }
}

}  // namespace orvane
