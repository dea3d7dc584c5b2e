#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "foundation/notification_center.h"
#include "persistence/fetch_request.h"
#include "persistence/managed_object.h"
#include "persistence/persistent_store_coordinator.h"
#include "persistence/undo_manager.h"

namespace orvane {

class ContextState;

namespace sqlite {
class Store;
}

/// Posted in a context's own notification centre, the context as sender. User info: lists of objects under
/// the three keys below. The first tells of changes since the last such notice, and comes when
/// `processPendingChanges`, a fetch or a save runs; the second comes after a save that succeeded and tells
/// what it wrote.
inline constexpr const char* NSManagedObjectContextObjectsDidChangeNotification =
    "NSManagedObjectContextObjectsDidChangeNotification";
inline constexpr const char* NSManagedObjectContextDidSaveNotification =
    "NSManagedObjectContextDidSaveNotification";
inline constexpr const char* NSInsertedObjectsKey = "inserted";
inline constexpr const char* NSUpdatedObjectsKey = "updated";
inline constexpr const char* NSDeletedObjectsKey = "deleted";

enum class ConcurrencyType {
    mainQueue,     ///< used on the thread that makes it, the host's main thread
    privateQueue,  ///< used on the one thread that first uses it; for child contexts
};

/// A working copy of part of the graph: it makes sure that each stored object exists once in it, gathers
/// changes and saves them all or not at all.
///
/// Objects are held weakly while they are unchanged and strongly while an insertion, change or deletion is
/// unsaved. A child context reads its parent's unsaved changes as of the parent's last notice (see above) or
/// of the moment it was made, and hands its own changes to the parent when it saves; the parent takes them in
/// at its next operation, on its own thread.
class ORVANE_EXPORT ManagedObjectContext {
  public:
    explicit ManagedObjectContext(ConcurrencyType type = ConcurrencyType::mainQueue);
    virtual ~ManagedObjectContext();
    ManagedObjectContext(const ManagedObjectContext&) = delete;
    ManagedObjectContext& operator=(const ManagedObjectContext&) = delete;

    /// The store that the context works on. In the place of an earlier one it means a fresh start: the
    /// context lets go of every object and change, and objects still held elsewhere can no longer be used.
    /// Child contexts keep to the earlier one. Not for a child context.
    void setPersistentStoreCoordinator(std::shared_ptr<PersistentStoreCoordinator> coordinator);
    const std::shared_ptr<PersistentStoreCoordinator>& persistentStoreCoordinator() const;

    /// Makes this context a child of a main-queue context; call on the parent's thread, before any other use.
    /// The coordinator is the parent's. The parent must outlive the child. Throws std::logic_error when the
    /// parent itself is a child.
    void setParentContext(ManagedObjectContext* parent);
    ManagedObjectContext* parentContext() const;

    /// Inserts a new object of the entity. Throws std::invalid_argument for an unknown entity,
    /// std::logic_error when the context has no coordinator.
    Ref<ManagedObject> insertNewObject(std::string_view entityName);
    template <class T>
    Ref<T> insert() {
        Ref<ManagedObject> object = insertNewObject(T::entityName());
        return Ref<T>::adopt(static_cast<T*>(object.detach()));
    }

    /// Deletes the object at the next save; its relationships are undone, or their other ends deleted with
    /// it, at once. An object that was never saved is discarded.
    void deleteObject(ManagedObject& object);

    /// The objects that match, those with unsaved changes judged as they are now. None, with an error, when
    /// the file cannot be read. Throws UnknownKeyError for a key that the entity does not have.
    virtual std::optional<std::vector<Ref<ManagedObject>>> executeFetchRequest(const FetchRequest& request,
                                                                               Error* error = nullptr);
    /// The same, typed; an empty list when the fetch fails.
    template <class T>
    std::vector<Ref<T>> fetch(const FetchRequest& request, Error* error = nullptr) {
        std::vector<Ref<T>> result;
        auto objects = executeFetchRequest(request, error);
        if (!objects) return result;
        result.reserve(objects->size());
        for (Ref<ManagedObject>& object : *objects)
            result.push_back(Ref<T>::adopt(static_cast<T*>(object.detach())));
        return result;
    }
    std::optional<std::size_t> countForFetchRequest(const FetchRequest& request, Error* error = nullptr);
    std::optional<std::vector<ManagedObjectID>> identifiersForFetchRequest(const FetchRequest& request,
                                                                           Error* error = nullptr);

    /// What kept the file from being read the last time that this happened; none so far when there is no
    /// error. Attributes, and calls without `error`, have no other way to tell that they know only a part.
    const Error& lastReadError() const;

    /// Writes every change in one transaction. False, with an error, when that fails; every change then stays
    /// pending. A row that another program deleted stays deleted: changes to it are dropped.
    bool save(Error* error = nullptr);
    bool hasChanges() const;
    /// Takes back every change since the last save.
    void rollback();
    /// Lets go of every object and change. Objects still held elsewhere can no longer be used.
    void reset();
    /// Reads the object anew at its next use. Without merging its unsaved changes are lost; with merging they
    /// stay on top of what the file holds. An object that was never saved is left as it is.
    void refreshObject(ManagedObject& object, bool mergeChanges);

    /// The object of that identifier, as a fault unless it is at hand; whether it exists is not looked up.
    Ref<ManagedObject> objectWithID(const ManagedObjectID& identifier);
    /// The object of that identifier, loaded when needed. None, with an error, when it no longer exists.
    Ref<ManagedObject> existingObjectWithID(const ManagedObjectID& identifier, Error* error = nullptr);
    /// The object of that identifier if it is at hand.
    Ref<ManagedObject> objectRegisteredForID(const ManagedObjectID& identifier) const;

    std::vector<Ref<ManagedObject>> insertedObjects() const;
    std::vector<Ref<ManagedObject>> updatedObjects() const;
    std::vector<Ref<ManagedObject>> deletedObjects() const;
    /// Number of objects at hand; for diagnostics.
    std::size_t registeredObjectCount() const;

    /// Posts the notice of changes, and ends the undo step.
    void processPendingChanges();
    NotificationCenter& notificationCenter();

    /// None for child contexts, unless one is set.
    UndoManager* undoManager() const;
    void setUndoManager(std::unique_ptr<UndoManager> undoManager);

    /// For the object graph itself.
    ContextState& state() const { return *state_; }

  private:
    std::unique_ptr<ContextState> state_;
};

/// Lets several operations of a context see the store's file in one state, and locks the file once for all of
/// them. It ends with the first save at the latest. When the lock cannot be had everything works as without a
/// scope, and scopes do nothing for a child context. Keep them short, since other programs wait. Use on the
/// context's thread.
class ORVANE_EXPORT StoreScope {
  public:
    StoreScope(const StoreScope&) = delete;
    StoreScope& operator=(const StoreScope&) = delete;

    /// Another program holds the lock.
    bool isLockedOut() const { return lockedOut_; }

  protected:
    StoreScope(ManagedObjectContext& context, bool forWriting);
    ~StoreScope();

  private:
    std::shared_ptr<sqlite::Store> store_;
    bool lockedOut_ = false;
};

/// For fetches that belong together: no other program's save is seen between them.
class ORVANE_EXPORT ReadScope : public StoreScope {
  public:
    explicit ReadScope(ManagedObjectContext& context) : StoreScope(context, false) {}
};

/// For a look-up and the save that depends on it: no other program writes in between.
class ORVANE_EXPORT WriteScope : public StoreScope {
  public:
    explicit WriteScope(ManagedObjectContext& context) : StoreScope(context, true) {}
};

}  // namespace orvane
