#include "persistence/managed_object_context.h"

#include <stdexcept>

#include "persistence/context_state.h"
#include "persistence/persistence_errors.h"

namespace orvane {

ManagedObjectContext::ManagedObjectContext(ConcurrencyType type)
    : state_(std::make_unique<ContextState>(*this, type)) {}

ManagedObjectContext::~ManagedObjectContext() = default;

void ManagedObjectContext::setPersistentStoreCoordinator(
    std::shared_ptr<PersistentStoreCoordinator> coordinator) {
    state_->setCoordinator(std::move(coordinator));
}

const std::shared_ptr<PersistentStoreCoordinator>& ManagedObjectContext::persistentStoreCoordinator() const {
    return state_->coordinator();
}

void ManagedObjectContext::setParentContext(ManagedObjectContext* parent) { state_->setParent(*parent); }

ManagedObjectContext* ManagedObjectContext::parentContext() const { return state_->parent(); }

Ref<ManagedObject> ManagedObjectContext::insertNewObject(std::string_view entityName) {
    return state_->insert(state_->entityNamed(entityName));
}

void ManagedObjectContext::deleteObject(ManagedObject& object) {
    if (object.managedObjectContext() == this) state_->deleteObject(object);
}

std::optional<std::vector<Ref<ManagedObject>>> ManagedObjectContext::executeFetchRequest(
    const FetchRequest& request, Error* error) {
    state_->processPendingChanges();
    return state_->noting(error, [&](Error* failure) { return state_->fetch(request, failure); });
}

std::optional<std::size_t> ManagedObjectContext::countForFetchRequest(const FetchRequest& request,
                                                                      Error* error) {
    return state_->noting(error, [&](Error* failure) { return state_->count(request, failure); });
}

std::optional<std::vector<ManagedObjectID>> ManagedObjectContext::identifiersForFetchRequest(
    const FetchRequest& request, Error* error) {
    return state_->noting(error, [&](Error* failure) { return state_->identifiers(request, failure); });
}

const Error& ManagedObjectContext::lastReadError() const { return state_->lastReadError(); }

bool ManagedObjectContext::save(Error* error) { return state_->save(error); }

bool ManagedObjectContext::hasChanges() const { return state_->hasChanges(); }

void ManagedObjectContext::rollback() { state_->rollback(); }

void ManagedObjectContext::reset() { state_->reset(); }

void ManagedObjectContext::refreshObject(ManagedObject& object, bool mergeChanges) {
    if (object.managedObjectContext() == this) state_->refresh(object, mergeChanges);
}

Ref<ManagedObject> ManagedObjectContext::objectWithID(const ManagedObjectID& identifier) {
    if (!identifier || !state_->storage()) return nullptr;
    return Ref<ManagedObject>(state_->objectFor(identifier, true));
}

Ref<ManagedObject> ManagedObjectContext::existingObjectWithID(const ManagedObjectID& identifier,
                                                              Error* error) {
    const auto notFound = [&] {
        assignError(error, Error(persistenceErrorDomain, objectNotFoundError,
                                 "The object " + identifier.URIRepresentation() + " does not exist."));
        return Ref<ManagedObject>();
    };
    if (!identifier || !state_->storage()) return notFound();
    state_->absorbInbox();
    ManagedObjectID known = identifier;
    if (identifier.isTemporaryID())
        known = ManagedObjectID(identifier.entity(), nullptr,
                                state_->permanentKeyOf(identifier.entity()->index, identifier.key()));
    Ref<ManagedObject> object(state_->objectFor(known, !known.isTemporaryID()));
    if (!object || !object->isUsable()) return notFound();
    if (!object->isFault()) return object;
    return state_->fire(*object, error) ? object : nullptr;
}

Ref<ManagedObject> ManagedObjectContext::objectRegisteredForID(const ManagedObjectID& identifier) const {
    if (!identifier || !state_->storage()) return nullptr;
    return Ref<ManagedObject>(state_->objectFor(identifier, false));
}

namespace {

std::vector<Ref<ManagedObject>> listedObjects(const ContextState& state,
                                              bool (ManagedObject::*belongs)() const) {
    std::vector<Ref<ManagedObject>> result;
    for (const Ref<ManagedObject>& object : state.listed())
        if (((*object).*belongs)()) result.push_back(object);
    return result;
}

}  // namespace

std::vector<Ref<ManagedObject>> ManagedObjectContext::insertedObjects() const {
    return listedObjects(*state_, &ManagedObject::isInserted);
}

std::vector<Ref<ManagedObject>> ManagedObjectContext::updatedObjects() const {
    return listedObjects(*state_, &ManagedObject::isUpdated);
}

std::vector<Ref<ManagedObject>> ManagedObjectContext::deletedObjects() const {
    return listedObjects(*state_, &ManagedObject::isDeleted);
}

std::size_t ManagedObjectContext::registeredObjectCount() const { return state_->registeredObjectCount(); }

StoreScope::StoreScope(ManagedObjectContext& context, bool forWriting) {
    const auto& coordinator = context.persistentStoreCoordinator();
    if (context.parentContext() || !coordinator || !coordinator->store()) return;
    store_ = coordinator->store();
    Error error;
    store_->beginAhead(forWriting ? sqlite::Transaction::Kind::write : sqlite::Transaction::Kind::read,
                       &error);
    lockedOut_ = error.domain() == persistenceErrorDomain && error.code() == storeLockedError;
}

StoreScope::~StoreScope() {
    if (store_) store_->takeTransaction();
}

void ManagedObjectContext::processPendingChanges() { state_->processPendingChanges(); }

NotificationCenter& ManagedObjectContext::notificationCenter() { return state_->notificationCenter; }

UndoManager* ManagedObjectContext::undoManager() const { return state_->undoManager.get(); }

void ManagedObjectContext::setUndoManager(std::unique_ptr<UndoManager> undoManager) {
    state_->undoManager = std::move(undoManager);
}

}  // namespace orvane
