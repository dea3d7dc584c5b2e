#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include "foundation/internal.h"
#include "persistence/managed_object_context.h"
#include "persistence/object_table.h"
#include "persistence/parent_changes.h"
#include "persistence/persistence_errors.h"
#include "persistence/sqlite/sql_compiler.h"
#include "persistence/sqlite/store.h"

namespace orvane {

/// What a context is made of. Its operations are spread over several files by subject: objects and identity
/// (context_state.cpp), changes and relationships (context_changes.cpp), fetching (context_fetch.cpp, and in
/// children context_child_fetch.cpp), collection operators (context_aggregate.cpp), saving
/// (context_save.cpp), parent and child (context_family.cpp).
class ContextState {
  public:
    ContextState(ManagedObjectContext& owner, ConcurrencyType type);
    ~ContextState();

    ManagedObjectContext& owner() const { return owner_; }

    // Context and store
    void setCoordinator(std::shared_ptr<PersistentStoreCoordinator> coordinator);
    const std::shared_ptr<PersistentStoreCoordinator>& coordinator() const { return coordinator_; }
    /// The connection this context reads through. None, with an error, when there is none.
    sqlite::Database* database(Error* error);
    sqlite::Store* store() const { return coordinator_ ? coordinator_->store().get() : nullptr; }
    /// Notes, or in debug builds checks, the thread the context is used on.
    void checkThread();

    /// Throws std::invalid_argument for an entity that the model does not have.
    const EntityDescription& entityNamed(std::string_view name) const;

    // Objects and identity
    ObjectStorage* storage() const { return storage_; }
    EntityTable& table(const EntityDescription& entity) { return storage_->table(entity.index); }
    ManagedObjectID identifierOf(const ManagedObject& object) const;
    ManagedObject* objectFor(const ManagedObjectID& identifier, bool create);
    bool fire(ManagedObject& object, Error* error = nullptr);
    /// Runs a reading, which takes an error to fill, and keeps its error for those whom nobody tells. That an
    /// object is gone is none: it was looked for, and the file could be read.
    template <class Reading>
    auto noting(Error* error, Reading&& reading) {
        Error failure;
        auto result = reading(&failure);
        if (result || !failure) return result;
        if (failure.code() != objectNotFoundError) lastReadError_ = failure;
        assignError(error, std::move(failure));
        return result;
    }
    const Error& lastReadError() const { return lastReadError_; }
    void turnIntoFault(ManagedObject& object, std::uint64_t kept = 0);
    void reset();
    void rollback();
    void refresh(ManagedObject& object, bool mergeChanges);
    std::size_t registeredObjectCount() const;

    // Changes
    Ref<ManagedObject> insert(const EntityDescription& entity);
    void deleteObject(ManagedObject& object);
    /// Notes that `property` changed from `before`, for saving, notices and undo.
    void noteChange(ManagedObject& object, std::size_t property, const Value& before);
    bool wantsOldValue(const ManagedObject& object) const;
    void setToOne(ManagedObject& object, std::size_t property, ManagedObject* target);
    std::vector<Ref<ManagedObject>> toManyObjects(ManagedObject& object, std::size_t property);
    void replaceToMany(ManagedObject& object, std::size_t property,
                       const std::vector<Ref<ManagedObject>>& members);
    void list(ManagedObject& object);
    /// Objects with unsaved changes, in the order of their first change.
    const std::vector<Ref<ManagedObject>>& listed() const { return listed_; }
    bool hasChanges() const;
    std::int64_t permanentKeyOf(std::size_t entityIndex, std::int64_t temporaryKey);
    void processPendingChanges();

    // Fetching
    std::optional<std::vector<Ref<ManagedObject>>> fetch(const FetchRequest& request, Error* error);
    std::optional<std::size_t> count(const FetchRequest& request, Error* error);
    std::optional<std::vector<ManagedObjectID>> identifiers(const FetchRequest& request, Error* error);
    std::optional<Value> aggregate(const ManagedObject& object, std::size_t property,
                                   std::string_view operation, std::string_view rest);

    // Saving
    bool save(Error* error);

    // Parent and child
    void setParent(ManagedObjectContext& parent);
    ManagedObjectContext* parent() const { return parent_; }
    /// Takes in what children saved.
    void absorbInbox();
    /// Shows the unsaved changes to children, if there are any.
    void publish();

    NotificationCenter notificationCenter;
    std::unique_ptr<UndoManager> undoManager;

  private:
    std::optional<sqlite::CompiledQuery> compile(const FetchRequest& request,
                                                 const EntityDescription& entity);
    /// `SELECT` with the part's columns and its table, which a condition may follow.
    std::string columnSelect(std::size_t entityIndex, RowPart part);
    bool mostAreAlive(const EntityTable& entityTable, sqlite::Database& file) const;
    /// Answers from the keys alone, which an index often holds, and reads only the rows that are not alive.
    std::optional<std::vector<Ref<ManagedObject>>> fetchAlive(const FetchRequest& request,
                                                              const sqlite::CompiledQuery& query,
                                                              EntityTable& entityTable,
                                                              sqlite::Database& file, Error* error);
    std::optional<std::vector<Ref<ManagedObject>>> fetchAsChild(const FetchRequest& request, Error* error);
    /// Keys of the entity's rows about which the file may not tell this child the truth: those with unsaved
    /// changes in the parent or here, and those that the parent saved since the reader began. In the order
    /// of their insertion.
    std::vector<std::int64_t> changedMeanwhile(const ParentChanges::Reader& reader,
                                               std::size_t entityIndex) const;
    void discard(ManagedObject& object);
    void unlist(ManagedObject& object);
    void undoOf(UndoManager::Action action);
    void linkToMany(ManagedObject& member, ManagedObject* owner, std::size_t ownerProperty, bool joined);
    void restoreDeleted(ManagedObject& object, bool wasInserted);
    bool validate(Error* error) const;
    bool saveToStore(Error* error);
    bool saveToParent();
    struct NewKey {
        Ref<ManagedObject> object;
        std::int64_t temporary;
    };
    bool assignKeys(sqlite::Database& file, std::vector<NewKey>& assigned, Error* error);
    bool writeRow(sqlite::Database& file, ManagedObject& object, bool& vanished, Error* error);
    void finishSave(const std::vector<NewKey>& assigned, const std::vector<Ref<ManagedObject>>& vanished);
    void postDidSave(const std::vector<Ref<ManagedObject>>& saved,
                     const std::vector<Ref<ManagedObject>>& inserted);
    RowSnapshot snapshotOf(const ManagedObject& object) const;
    void applySnapshot(ManagedObject& object, const RowSnapshot& snapshot);
    void takeIn(EntityTable& entityTable, std::int64_t key, const RowSnapshot& snapshot);
    void publishLocked();
    /// Fills the object from the parent's unsaved changes. False when it is deleted there, none when it is
    /// not changed.
    std::optional<bool> fillFromParent(ManagedObject& object);
    bool fillFromFile(ManagedObject& object, Error* error);
    bool hasPendingChanges(std::size_t entityIndex) const;
    sqlite::EntityStatements& statements(std::size_t entityIndex);

    ManagedObjectContext& owner_;
    ConcurrencyType type_;
    std::thread::id thread_;
    std::shared_ptr<PersistentStoreCoordinator> coordinator_;
    // Child contexts read through a connection, and with statement texts, of their own.
    std::unique_ptr<sqlite::Database> ownDatabase_;
    std::optional<sqlite::StatementTexts> ownStatements_;
    ObjectStorage* storage_ = nullptr;
    std::vector<Ref<ManagedObject>> listed_;
    std::vector<Ref<ManagedObject>> noticeInserted_;
    std::vector<Ref<ManagedObject>> noticeUpdated_;
    std::vector<Ref<ManagedObject>> noticeDeleted_;
    std::vector<Ref<ManagedObject>> fresh_;  // inserted within the present undo step
    bool processing_ = false;

    Error lastReadError_;

    ManagedObjectContext* parent_ = nullptr;
    std::shared_ptr<ParentChanges> fromParent_;  // as a child
    std::shared_ptr<ParentChanges> shared_;      // as a parent
};

}  // namespace orvane
