#include <algorithm>

#include "persistence/context_state.h"
#include "persistence/identifier_set.h"
#include "persistence/persistence_errors.h"

namespace orvane {

bool ContextState::save(Error* error) {
    checkThread();
    if (!storage_) {
        database(error);
        return false;
    }
    absorbInbox();
    processPendingChanges();
    if (!hasChanges()) return true;
    if (!validate(error)) return false;
    return fromParent_ ? saveToParent() : saveToStore(error);
}

bool ContextState::validate(Error* error) const {
    const auto missing = [&](const ManagedObject& object, const std::string& property) {
        assignError(error,
                    Error(persistenceErrorDomain, validationMissingValueError,
                          "The " + object.entity().name + " " + identifierOf(object).URIRepresentation() +
                              " needs a value for \"" + property + "\"."));
        return false;
    };
    for (const Ref<ManagedObject>& object : listed_) {
        if (!object->hasChanges() || object->isDeleted()) continue;
        const EntityDescription& entity = object->entity();
        const auto concerns = [&](std::size_t property) {
            return object->isInserted() || (object->changed_ >> property & 1) != 0;
        };
        for (std::size_t i = 0; i < entity.attributes.size(); ++i)
            if (!entity.attributes[i].optional && concerns(i) &&
                object->table_->slotValue(*object, i).isNone())
                return missing(*object, entity.attributes[i].name);
        for (std::size_t i = 0; i < entity.relationships.size(); ++i) {
            const std::size_t property = entity.attributes.size() + i;
            if (!entity.relationships[i].optional && !entity.relationships[i].toMany && concerns(property) &&
                object->table_->slotValue(*object, property).isNone())
                return missing(*object, entity.relationships[i].name);
        }
    }
    return true;
}

bool ContextState::assignKeys(sqlite::Database& file, std::vector<NewKey>& assigned, Error* error) {
    std::vector<std::vector<ManagedObject*>> inserted(storage_->tables().size());
    for (const Ref<ManagedObject>& object : listed_)
        if (object->isInserted() && object->key_ < 0)
            inserted[object->entity().index].push_back(object.get());
    for (std::size_t i = 0; i < inserted.size(); ++i) {
        if (inserted[i].empty()) continue;
        const std::string& name = storage_->table(i).entity().name;
        sqlite::Statement* select =
            file.prepared("SELECT \"last\" FROM \"_keys\" WHERE \"entity\" = ?", error);
        sqlite::Statement* store =
            file.prepared("INSERT OR REPLACE INTO \"_keys\" (\"entity\", \"last\") VALUES (?, ?)", error);
        if (!select || !store) return false;
        std::int64_t last = 0;
        {
            const sqlite::StatementUse use(*select);
            use->bind(1, std::string_view(name));
            const int code = use->step();
            if (code == SQLITE_ROW) last = use->integer(0);
            if (code != SQLITE_ROW && code != SQLITE_DONE) {
                assignError(error, file.lastError());
                return false;
            }
        }
        for (ManagedObject* object : inserted[i]) {
            assigned.push_back({Ref<ManagedObject>(object), object->key_});
            object->key_ = ++last;
        }
        const sqlite::StatementUse use(*store);
        use->bind(1, std::string_view(name));
        use->bind(2, last);
        if (use->step() != SQLITE_DONE) {
            assignError(error, file.lastError());
            return false;
        }
    }
    return true;
}

bool ContextState::writeRow(sqlite::Database& file, ManagedObject& object, bool& vanished, Error* error) {
    const EntityTable& entityTable = *object.table_;
    sqlite::EntityStatements& texts = statements(object.entity().index);
    std::uint64_t columns = 0;
    for (std::size_t i = 0; i < entityTable.columns().size(); ++i)
        if (object.isInserted() || (object.changed_ >> entityTable.columns()[i].property & 1) != 0)
            columns |= std::uint64_t{1} << i;
    if (columns == 0 && !object.isInserted() && !object.isDeleted()) return true;
    sqlite::Statement* statement = file.prepared(object.isDeleted()    ? texts.remove
                                                 : object.isInserted() ? texts.insert
                                                                       : texts.update(columns),
                                                 error);
    if (!statement) return false;
    const sqlite::StatementUse use(*statement);
    if (object.isDeleted()) {
        use->bind(1, object.key_);
    } else if (object.isInserted()) {
        use->bind(1, object.key_);
        entityTable.bind(object, *use, 2, columns);
    } else {
        entityTable.bind(object, *use, 1, columns);
        use->bind(__builtin_popcountll(columns) + 1, object.key_);
    }
    if (use->step() != SQLITE_DONE) {
        assignError(error, file.lastError());
        return false;
    }
    vanished = !object.isInserted() && sqlite3_changes(file.handle()) == 0;
    return true;
}

bool ContextState::saveToStore(Error* error) {
    sqlite::Database* file = database(error);
    if (!file) return false;
    std::vector<NewKey> assigned;
    std::vector<Ref<ManagedObject>> vanished;
    const auto write = [&] {
        using sqlite::Transaction;
        auto transaction = store()->takeTransaction();
        if (transaction && !(transaction->kind() == Transaction::Kind::write && transaction->begun()))
            transaction.reset();
        if (!transaction) transaction = std::make_unique<Transaction>(*file, Transaction::Kind::write, error);
        if (!transaction->begun() || !assignKeys(*file, assigned, error)) return false;
        for (const Ref<ManagedObject>& object : listed_) {
            if (!object->hasChanges()) continue;
            bool rowVanished = false;
            if (!writeRow(*file, *object, rowVanished, error)) return false;
            if (rowVanished && !object->isDeleted()) vanished.push_back(object);
        }
        std::unique_lock<std::mutex> lock;
        if (shared_) lock = std::unique_lock(shared_->mutex);
        if (!transaction->commit(error)) return false;
        finishSave(assigned, vanished);
        return true;
    };
    std::vector<Ref<ManagedObject>> saved;
    std::vector<Ref<ManagedObject>> inserted;
    for (const Ref<ManagedObject>& object : listed_) {
        if (!object->hasChanges()) continue;
        saved.push_back(object);
        if (object->isInserted()) inserted.push_back(object);
    }
    if (!write()) {
        for (const NewKey& key : assigned) key.object->key_ = key.temporary;
        return false;
    }
    postDidSave(saved, inserted);
    return true;
}

void ContextState::finishSave(const std::vector<NewKey>& assigned,
                              const std::vector<Ref<ManagedObject>>& vanished) {
    // Without children nobody knows the old ones.
    if (shared_ && shared_.use_count() == 1)
        for (auto& keys : shared_->permanentKeys) keys.clear();
    for (const NewKey& key : assigned) {
        ManagedObject& object = *key.object;
        EntityTable& entityTable = *object.table_;
        const std::int64_t permanent = std::exchange(object.key_, key.temporary);
        entityTable.changeKey(object, permanent);
        if (shared_) shared_->permanentKeys[object.entity().index].emplace(key.temporary, permanent);
        for (const StoredColumn& column : entityTable.columns()) {
            if (column.kind != SlotKind::toOne) continue;
            ManagedObject* owner = entityTable.slot<ToOneSlot>(object, column.offset).get();
            if (!owner) continue;
            const RowSlot& inverse = owner->table_->slots()[entityTable.inverseProperty(column.property)];
            if (inverse.kind != SlotKind::toMany) continue;
            if (auto& members = owner->table_->slot<ToManySlot>(*owner, inverse.offset).identifiers)
                members->replace(key.temporary, permanent);
        }
    }
    for (const Ref<ManagedObject>& object : vanished) object->reserved_ |= ManagedObject::stateDeleted;
    const std::vector<Ref<ManagedObject>> saved = std::exchange(listed_, {});
    for (const Ref<ManagedObject>& object : saved) {
        if (shared_ && object->hasChanges()) shared_->noteSaved(object->entity().index, object->key_);
        object->changed_ = 0;
        if (object->isDeleted()) {
            object->reserved_ |= ManagedObject::stateGone;
            object->table_->forget(*object);
        }
        object->reserved_ &= ~(ManagedObject::stateListed | ManagedObject::stateInserted);
    }
    if (shared_) publishLocked();
}

void ContextState::postDidSave(const std::vector<Ref<ManagedObject>>& saved,
                               const std::vector<Ref<ManagedObject>>& inserted) {
    Value::Array updated;
    Value::Array deleted;
    std::size_t nextInserted = 0;
    for (const Ref<ManagedObject>& object : saved) {
        if (nextInserted < inserted.size() && inserted[nextInserted] == object)
            ++nextInserted;
        else
            (object->isUsable() ? updated : deleted).emplace_back(object);
    }
    Dictionary userInfo;
    userInfo.set(NSInsertedObjectsKey, Value::Array(inserted.begin(), inserted.end()));
    userInfo.set(NSUpdatedObjectsKey, std::move(updated));
    userInfo.set(NSDeletedObjectsKey, std::move(deleted));
    notificationCenter.post(NSManagedObjectContextDidSaveNotification, &owner_, std::move(userInfo));
}

}  // namespace orvane
