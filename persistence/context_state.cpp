#include "persistence/context_state.h"

#include <stdexcept>

#include "persistence/identifier_set.h"
#include "persistence/text_batch.h"

namespace orvane {

namespace {

/// How many faults are brought to life together with one that is asked for, and how many keys they may span.
constexpr std::int64_t faultBatch = 256;

}  // namespace

ContextState::ContextState(ManagedObjectContext& owner, ConcurrencyType type) : owner_(owner), type_(type) {
    if (type == ConcurrencyType::mainQueue) {
        undoManager = std::make_unique<UndoManager>();
        thread_ = std::this_thread::get_id();
    }
}

ContextState::~ContextState() {
    if (!storage_) return;
    reset();
    undoManager.reset();
    storage_->contextGone();
}

void ContextState::checkThread() {
#ifndef NDEBUG
    const std::thread::id current = std::this_thread::get_id();
    if (thread_ == std::thread::id())
        thread_ = current;
    else if (thread_ != current)
        throw std::logic_error(
            "a managed object context or one of its objects was used from a thread not its own");
#endif
}

void ContextState::setCoordinator(std::shared_ptr<PersistentStoreCoordinator> coordinator) {
    if (storage_) {
        if (parent_) throw std::logic_error("a child context keeps the coordinator of its parent");
        reset();
        // Children know the keys of the earlier store, which must not meet those of the new one.
        shared_.reset();
        storage_->contextGone();
    }
    coordinator_ = std::move(coordinator);
    // A child makes objects while it holds a read lock, and a poll may wait for that lock.
    const std::size_t largestSlab = parent_ ? SlabAllocator::mediumSlab : SlabAllocator::hugeSlab;
    storage_ = new ObjectStorage(*this, *coordinator_, largestSlab);
}

sqlite::Database* ContextState::database(Error* error) {
    sqlite::Store* open = store();
    if (!open) {
        assignError(error, Error(persistenceErrorDomain, contextUnusableError,
                                 "The context has no open store. Add a store to its coordinator first."));
        return nullptr;
    }
    if (!parent_) return &open->mainDatabase();
    if (!ownDatabase_) ownDatabase_ = open->openConnection(error);
    return ownDatabase_.get();
}

sqlite::EntityStatements& ContextState::statements(std::size_t entityIndex) {
    if (!parent_) return store()->statements().of(entityIndex);
    if (!ownStatements_) ownStatements_.emplace(coordinator_->model());
    return ownStatements_->of(entityIndex);
}

const EntityDescription& ContextState::entityNamed(std::string_view name) const {
    if (!coordinator_) throw std::logic_error("the context has no coordinator");
    const EntityDescription* entity = coordinator_->model().entity(name);
    if (!entity) throw std::invalid_argument("the model has no entity \"" + std::string(name) + "\"");
    return *entity;
}

ManagedObjectID ContextState::identifierOf(const ManagedObject& object) const {
    return {&object.entity(), store() ? store()->identifier() : nullptr, object.key_};
}

ManagedObject* ContextState::objectFor(const ManagedObjectID& identifier, bool create) {
    EntityTable& entityTable = table(*identifier.entity());
    ManagedObject* object = entityTable.find(identifier.key());
    return object || !create ? object : entityTable.create(identifier.key());
}

bool ContextState::fire(ManagedObject& object, Error* error) {
    checkThread();
    if (fromParent_)
        if (const std::optional<bool> known = fillFromParent(object)) return *known;
    return noting(error, [&](Error* failure) { return fillFromFile(object, failure); });
}

bool ContextState::fillFromFile(ManagedObject& object, Error* error) {
    sqlite::Database* file = database(error);
    if (!file || object.key_ < 0) return false;
    EntityTable& entityTable = *object.table_;
    const sqlite::EntityStatements& texts = statements(entityTable.entity().index);

    // Objects that came as members of a relationship are read one after the other: read the neighbours along.
    std::vector<ManagedObject*> wanted{&object};  // by key, as the rows come
    std::int64_t last = object.key_;
    if ((object.state() & ManagedObject::stateRefreshed) == 0) {
        std::unique_lock<std::mutex> lock;
        if (fromParent_) lock = std::unique_lock(fromParent_->mutex);
        const EntityChanges* unsaved =
            fromParent_ ? &fromParent_->unsaved[entityTable.entity().index] : nullptr;
        for (ManagedObject* neighbour : entityTable.directory().neighbours(object.key_)) {
            if (neighbour->key_ >= object.key_ + faultBatch) break;
            if ((neighbour->state() & ManagedObject::stateRefreshed) != 0 || neighbour->changed_ != 0 ||
                EntityTable::isFilled(*neighbour, RowPart::all) ||
                (unsaved && unsaved->contains(neighbour->key_)))
                continue;
            if (neighbour != &object) wanted.push_back(neighbour);
            last = neighbour->key_;
        }
        const auto span = static_cast<std::size_t>(last - object.key_) + 1;
        if (wanted.size() * 4 < span) last = object.key_;
    }
    sqlite::Statement* statement = file->prepared(texts.selectByKeys, error);
    if (!statement) return false;
    const sqlite::StatementUse use(*statement);
    use->bind(1, object.key_);
    use->bind(2, last);
    TextBatch batch(storage_->texts());
    auto next = wanted.begin();
    int result;
    while ((result = use->step()) == SQLITE_ROW) {
        const std::int64_t key = use->integer(0);
        while (next != wanted.end() && (*next)->key_ < key) ++next;
        if (next != wanted.end() && (*next)->key_ == key) entityTable.fill(**next, *use, RowPart::all, batch);
    }
    if (result != SQLITE_DONE) {
        assignError(error, file->lastError());
        return false;
    }
    if (EntityTable::isFilled(object, RowPart::all)) return true;
    // The texts went with the row.
    object.reserved_ &= ~ManagedObject::stateTextsLate;
    assignError(error,
                Error(persistenceErrorDomain, objectNotFoundError,
                      "The object " + identifierOf(object).URIRepresentation() + " no longer exists."));
    return false;
}

void ContextState::turnIntoFault(ManagedObject& object, std::uint64_t kept) {
    object.reserved_ &= ~(ManagedObject::stateLoaded | ManagedObject::stateTextsLate);
    object.table_->clearRow(object, kept);
}

void ContextState::reset() {
    if (!storage_) return;
    // Everything at hand is held until all of it has let go: letting go of one object may end another.
    std::vector<Ref<ManagedObject>> held;
    for (const auto& entityTable : storage_->tables())
        for (ManagedObject* object : entityTable->directory().all()) held.emplace_back(object);
    for (const Ref<ManagedObject>& object : held) {
        object->reserved_ = ManagedObject::stateGone;
        object->changed_ = 0;
        object->table_->clearRow(*object);
        object->table_->forget(*object);
    }
    listed_.clear();
    noticeInserted_.clear();
    noticeUpdated_.clear();
    noticeDeleted_.clear();
    fresh_.clear();
    if (undoManager) undoManager->removeAllActions();
    publish();
}

void ContextState::rollback() {
    if (!storage_) return;
    processPendingChanges();
    const std::vector<Ref<ManagedObject>> changed = std::exchange(listed_, {});
    std::vector<Ref<ManagedObject>> observed;
    for (const auto& entityTable : storage_->tables())
        for (ManagedObject* object : entityTable->directory().all())
            if (object->isObserved()) observed.emplace_back(object);
    for (const Ref<ManagedObject>& object : observed)
        for (const RowSlot& slot : object->table_->slots()) object->willChangeValueForKey(slot.name);
    for (const Ref<ManagedObject>& object : changed) {
        const bool wasInserted = object->isInserted();
        object->reserved_ &= ~(ManagedObject::stateListed | ManagedObject::stateDeleted |
                               ManagedObject::stateInserted | ManagedObject::stateNew);
        object->changed_ = 0;
        if (wasInserted) {
            object->reserved_ = ManagedObject::stateGone;
            object->table_->forget(*object);
        }
        turnIntoFault(*object);
    }
    // Other ends that were read may list members which have just left or come back.
    for (const auto& entityTable : storage_->tables())
        for (ManagedObject* object : entityTable->directory().all())
            for (const RowSlot& slot : entityTable->slots())
                if (slot.kind == SlotKind::toMany)
                    entityTable->slot<ToManySlot>(*object, slot.offset).identifiers.reset();
    if (undoManager) undoManager->removeAllActions();
    for (auto object = observed.rbegin(); object != observed.rend(); ++object)
        for (const RowSlot& slot : (*object)->table_->slots()) (*object)->didChangeValueForKey(slot.name);
    publish();
}

void ContextState::refresh(ManagedObject& object, bool mergeChanges) {
    if (object.isInserted() || (object.state() & ManagedObject::stateGone)) return;
    const Ref<ManagedObject> held(&object);
    const bool observed = object.isObserved();
    if (observed)
        for (const RowSlot& slot : object.table_->slots()) object.willChangeValueForKey(slot.name);
    if (!mergeChanges) {
        object.changed_ = 0;
        object.reserved_ &= ~ManagedObject::stateDeleted;
        unlist(object);
    }
    turnIntoFault(object, object.changed_);
    object.reserved_ |= ManagedObject::stateRefreshed;
    if (observed)
        for (auto slot = object.table_->slots().rbegin(); slot != object.table_->slots().rend(); ++slot)
            object.didChangeValueForKey(slot->name);
}

std::size_t ContextState::registeredObjectCount() const {
    std::size_t result = 0;
    if (storage_)
        for (const auto& entityTable : storage_->tables()) result += entityTable->directory().size();
    return result;
}

}  // namespace orvane
