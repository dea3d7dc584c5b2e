#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <utility>

#include "persistence/context_state.h"
#include "persistence/identifier_set.h"

namespace orvane {

namespace {

/// Temporary keys differ across all contexts, so that a child's new object keeps its key in its parent.
std::int64_t nextTemporaryKey() {
    static std::atomic<std::int64_t> last{0};
    return -(++last);
}

Value objectList(std::vector<Ref<ManagedObject>>& objects, bool (*belongs)(const ManagedObject&)) {
    // The memory of a long list goes with it.
    const std::vector<Ref<ManagedObject>> listed = std::exchange(objects, {});
    Value::Array result;
    for (const Ref<ManagedObject>& object : listed)
        if (belongs(*object)) result.emplace_back(object);
    return result;
}

}  // namespace

void ContextState::list(ManagedObject& object) {
    if (object.state() & ManagedObject::stateListed) return;
    object.reserved_ |= ManagedObject::stateListed;
    listed_.emplace_back(&object);
}

void ContextState::unlist(ManagedObject& object) {
    if ((object.state() & ManagedObject::stateListed) == 0) return;
    object.reserved_ &= ~ManagedObject::stateListed;
    // What changed last is most often what goes first.
    const auto found = std::find_if(listed_.rbegin(), listed_.rend(),
                                    [&](const auto& candidate) { return candidate.get() == &object; });
    if (found != listed_.rend()) listed_.erase(std::next(found).base());
}

bool ContextState::hasChanges() const {
    return std::any_of(listed_.begin(), listed_.end(),
                       [](const auto& object) { return object->hasChanges(); });
}

bool ContextState::hasPendingChanges(std::size_t entityIndex) const {
    return std::any_of(listed_.begin(), listed_.end(), [&](const auto& object) {
        return object->entity().index == entityIndex && object->hasChanges();
    });
}

bool ContextState::wantsOldValue(const ManagedObject& object) const {
    return undoManager && undoManager->isUndoRegistrationEnabled() &&
           (object.state() & ManagedObject::stateNew) == 0;
}

void ContextState::undoOf(UndoManager::Action action) {
    if (undoManager) undoManager->registerUndo(std::move(action));
}

Ref<ManagedObject> ContextState::insert(const EntityDescription& entity) {
    checkThread();
    Ref<ManagedObject> object(table(entity).create(nextTemporaryKey()));
    object->reserved_ |= ManagedObject::stateLoaded | ManagedObject::stateInserted | ManagedObject::stateNew;
    for (std::size_t i = 0; i < entity.attributes.size(); ++i)
        if (!entity.attributes[i].defaultValue.isNone())
            object->table_->setSlotValue(*object, i, entity.attributes[i].defaultValue);
    list(*object);
    noticeInserted_.push_back(object);
    if (undoManager && undoManager->isUndoRegistrationEnabled()) {
        fresh_.push_back(object);
        undoManager->registerUndo([this, object] {
            if (object->isUsable()) deleteObject(*object);
        });
    } else {
        // Nothing takes the insertion back, so later edits of the object must be undone one by one.
        object->reserved_ &= ~ManagedObject::stateNew;
    }
    object->awakeFromInsert();
    return object;
}

void ContextState::noteChange(ManagedObject& object, std::size_t property, const Value& before) {
    object.changed_ |= std::uint64_t{1} << property;
    list(object);
    if (!object.isInserted() && (noticeUpdated_.empty() || noticeUpdated_.back().get() != &object))
        noticeUpdated_.emplace_back(&object);
    if (!wantsOldValue(object) || property >= object.entity().attributes.size()) return;
    undoOf([held = Ref<ManagedObject>(&object), property, before] {
        if (held->isUsable()) held->writeProperty(property, before);
    });
}

void ContextState::linkToMany(ManagedObject& member, ManagedObject* owner, std::size_t ownerProperty,
                              bool joined) {
    if (!owner) return;
    const RowSlot& place = owner->table_->slots()[ownerProperty];
    if (auto& members = owner->table_->slot<ToManySlot>(*owner, place.offset).identifiers) {
        if (joined)
            members->add(member.key_);
        else
            members->remove(member.key_);
    }
    if (!owner->isInserted() && (noticeUpdated_.empty() || noticeUpdated_.back().get() != owner))
        noticeUpdated_.emplace_back(owner);
}

void ContextState::setToOne(ManagedObject& object, std::size_t property, ManagedObject* target) {
    checkThread();
    if (target && target->table_->storage().context() != this)
        throw std::logic_error("a relationship cannot lead to an object of another context");
    EntityTable& entityTable = *object.table_;
    if (target && target->entity().index != entityTable.destinationEntity(property))
        throw std::invalid_argument(std::string(entityTable.entity().name) + "." +
                                    std::string(entityTable.slots()[property].name) + " cannot lead to a " +
                                    target->entity().name);
    if (target && !target->isUsable()) target = nullptr;
    object.willRead();
    const RowSlot& place = entityTable.slots()[property];
    auto& slot = entityTable.slot<ToOneSlot>(object, place.offset);
    const Ref<ManagedObject> held(&object);
    const Ref<ManagedObject> before(slot.get());
    const Ref<ManagedObject> after(target);
    const std::size_t inverse = entityTable.inverseProperty(property);
    const EntityTable& otherTable = storage_->table(entityTable.destinationEntity(property));
    const RowSlot& inversePlace = otherTable.slots()[inverse];
    const bool changes = before != after;

    // Both ends and the object itself are announced as one change, so that every observer sees the graph
    // whole.
    const auto announced = [&](ManagedObject* end) { return changes && end && end->isObserved(); };
    if (object.isObserved()) object.willChangeValueForKey(place.name);
    const bool tellBefore = announced(before.get());
    const bool tellAfter = announced(after.get());
    if (tellBefore) before->willChangeValueForKey(inversePlace.name);
    if (tellAfter) after->willChangeValueForKey(inversePlace.name);
    if (changes) {
        slot.set(target);
        if (inversePlace.kind == SlotKind::toMany) {
            linkToMany(object, before.get(), inverse, false);
            linkToMany(object, after.get(), inverse, true);
        }
        noteChange(object, property, Value());
        if (wantsOldValue(object))
            undoOf([this, held, property, before] {
                if (held->isUsable()) setToOne(*held, property, before.get());
            });
        if (inversePlace.kind == SlotKind::toOne) {
            // One to one: both ends hold a key, and whoever was linked before is let go.
            if (before) {
                before->willRead();
                auto& otherSlot = otherTable.slot<ToOneSlot>(*before, inversePlace.offset);
                if (otherSlot.get() == &object) {
                    otherSlot.set(nullptr);
                    noteChange(*before, inverse, Value());
                }
            }
            if (after) {
                after->willRead();
                auto& otherSlot = otherTable.slot<ToOneSlot>(*after, inversePlace.offset);
                const Ref<ManagedObject> rival(otherSlot.get());
                otherSlot.set(&object);
                noteChange(*after, inverse, Value());
                if (rival && rival != held) {
                    if (rival->isObserved()) rival->willChangeValueForKey(place.name);
                    rival->willRead();
                    entityTable.slot<ToOneSlot>(*rival, place.offset).set(nullptr);
                    noteChange(*rival, property, Value());
                    if (wantsOldValue(*rival))
                        undoOf([this, rival, property, after] {
                            if (rival->isUsable()) setToOne(*rival, property, after.get());
                        });
                    if (rival->isObserved()) rival->didChangeValueForKey(place.name);
                }
            }
        }
    }
    if (tellAfter) after->didChangeValueForKey(inversePlace.name);
    if (tellBefore) before->didChangeValueForKey(inversePlace.name);
    if (object.isObserved()) object.didChangeValueForKey(place.name);
}

std::vector<Ref<ManagedObject>> ContextState::toManyObjects(ManagedObject& object, std::size_t property) {
    checkThread();
    EntityTable& entityTable = *object.table_;
    EntityTable& otherTable = storage_->table(entityTable.destinationEntity(property));
    auto& identifiers =
        entityTable.slot<ToManySlot>(object, entityTable.slots()[property].offset).identifiers;
    if (identifiers) {
        std::vector<Ref<ManagedObject>> members;
        for (const std::int64_t key : identifiers->keys())
            members.emplace_back(&otherTable.findOrCreate(key));
        return members;
    }
    const FetchRequest request{
        otherTable.entity().name,
        Predicate::withFormat("%K == %@",
                              {Value(otherTable.slots()[entityTable.inverseProperty(property)].name),
                               Value(Ref<ManagedObject>(&object))})};
    // A relationship that cannot be read reads as empty and is asked for again the next time.
    auto members = noting(nullptr, [&](Error* failure) { return fetch(request, failure); });
    if (!members) return {};
    identifiers = std::make_unique<IdentifierSet>();
    identifiers->reserve(members->size());
    for (const Ref<ManagedObject>& member : *members) identifiers->add(member->key_);
    return std::move(*members);
}

void ContextState::replaceToMany(ManagedObject& object, std::size_t property,
                                 const std::vector<Ref<ManagedObject>>& members) {
    const std::size_t inverse = object.table_->inverseProperty(property);
    for (const Ref<ManagedObject>& member : toManyObjects(object, property))
        if (std::find(members.begin(), members.end(), member) == members.end())
            setToOne(*member, inverse, nullptr);
    for (const Ref<ManagedObject>& member : members) setToOne(*member, inverse, &object);
}

void ContextState::deleteObject(ManagedObject& object) {
    checkThread();
    if (!object.isUsable()) return;
    const Ref<ManagedObject> held(&object);
    object.willRead();
    EntityTable& entityTable = *object.table_;
    for (std::size_t i = object.entity().attributes.size(); i < entityTable.slots().size(); ++i) {
        const bool cascade = entityTable.relationship(i).deleteRule == DeleteRule::cascade;
        if (entityTable.slots()[i].kind == SlotKind::toOne) {
            const Ref<ManagedObject> target(
                entityTable.slot<ToOneSlot>(object, entityTable.slots()[i].offset).get());
            if (!target) continue;
            setToOne(object, i, nullptr);
            if (cascade) deleteObject(*target);
        } else {
            for (const Ref<ManagedObject>& member : toManyObjects(object, i)) {
                setToOne(*member, entityTable.inverseProperty(i), nullptr);
                if (cascade) deleteObject(*member);
            }
        }
    }
    const bool wasInserted = object.isInserted();
    undoOf([this, held, wasInserted] { restoreDeleted(*held, wasInserted); });
    if (wasInserted) {
        discard(object);
    } else {
        object.reserved_ |= ManagedObject::stateDeleted;
        list(object);
        noticeDeleted_.push_back(held);
    }
}

void ContextState::discard(ManagedObject& object) {
    object.reserved_ &= ~(ManagedObject::stateInserted | ManagedObject::stateNew);
    object.reserved_ |= ManagedObject::stateGone;
    object.changed_ = 0;
    object.table_->forget(object);
    unlist(object);
}

void ContextState::restoreDeleted(ManagedObject& object, bool wasInserted) {
    const std::uint32_t state = object.state();
    if ((state & (ManagedObject::stateDeleted | ManagedObject::stateGone)) == 0) return;
    if (state & ManagedObject::stateGone) {
        // Never saved, or its deletion was: either way it has to be written as new, under the key it had.
        object.table_->directory().set(object.key_, &object);
        wasInserted = true;
    }
    object.reserved_ &= ~(ManagedObject::stateDeleted | ManagedObject::stateGone);
    object.reserved_ |= ManagedObject::stateLoaded;
    if (wasInserted) {
        object.reserved_ |= ManagedObject::stateInserted;
        noticeInserted_.emplace_back(&object);
    }
    list(object);
    undoOf([this, held = Ref<ManagedObject>(&object)] {
        if (held->isUsable()) deleteObject(*held);
    });
}

void ContextState::processPendingChanges() {
    if (processing_) return;
    processing_ = true;
    if (!noticeInserted_.empty() || !noticeUpdated_.empty() || !noticeDeleted_.empty()) {
        Dictionary userInfo;
        userInfo.set(NSInsertedObjectsKey, objectList(noticeInserted_, [](const ManagedObject& object) {
                         return object.isUsable();
                     }));
        std::sort(noticeUpdated_.begin(), noticeUpdated_.end(),
                  [](const auto& left, const auto& right) { return left.get() < right.get(); });
        noticeUpdated_.erase(std::unique(noticeUpdated_.begin(), noticeUpdated_.end()), noticeUpdated_.end());
        userInfo.set(NSUpdatedObjectsKey, objectList(noticeUpdated_, [](const ManagedObject& object) {
                         return object.isUsable() && !object.isInserted();
                     }));
        userInfo.set(NSDeletedObjectsKey, objectList(noticeDeleted_, [](const ManagedObject& object) {
                         return object.isDeleted();
                     }));
        publish();
        notificationCenter.post(NSManagedObjectContextObjectsDidChangeNotification, &owner_,
                                std::move(userInfo));
    }
    for (const Ref<ManagedObject>& object : fresh_) object->reserved_ &= ~ManagedObject::stateNew;
    fresh_.clear();
    if (undoManager) undoManager->endStep();
    processing_ = false;
}

}  // namespace orvane
