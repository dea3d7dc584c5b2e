#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/error.h"
#include "persistence/entity_class.h"
#include "persistence/managed_object_id.h"
#include "persistence/model.h"

namespace orvane {

inline constexpr const char* NSSQLiteStoreType = "SQLite";

namespace sqlite {
class Store;
}

/// How a store is opened.
struct PersistentStoreOptions {
    bool migratePersistentStoresAutomatically = false;  ///< bring a file of an older model up to date
    bool inferMappingModel = false;                     ///< … by comparing the two models
    std::map<std::string, std::string> pragmas;         ///< "journal_mode", "secure_delete", "locking_mode"
    std::string fileSystem;                             ///< SQLite VFS; empty for the usual one
    int busyTimeoutMilliseconds = 50;                   ///< how long another program's lock is waited for
};

/// Binds a model, and the C++ classes of its entities, to one database file. Held by the contexts that use
/// it.
class ORVANE_EXPORT PersistentStoreCoordinator {
  public:
    /// Entities whose class is not among `classes` get objects that are read and set by key alone.
    PersistentStoreCoordinator(std::shared_ptr<const ManagedObjectModel> model,
                               const std::vector<const EntityClass*>& classes);
    ~PersistentStoreCoordinator();

    /// Opens or creates the database file. False, with one of the errors of `persistenceErrorDomain`, when
    /// that fails; the file is then as it was. One store a coordinator; `configuration` must be empty.
    bool addPersistentStore(std::string_view type, std::string_view configuration,
                            const std::filesystem::path& file, const PersistentStoreOptions& options,
                            Error* error = nullptr);

    /// The store's file was deleted or moved, or another stands in its place: nothing is saved any more, as
    /// the error says. A file that may not be looked at counts as unmoved.
    bool isStoreMoved(Error* error = nullptr) const;

    const ManagedObjectModel& model() const { return *model_; }
    const std::shared_ptr<const ManagedObjectModel>& sharedModel() const { return model_; }
    /// The class that makes the entity's objects; none for entities without one.
    const EntityClass* classOf(const EntityDescription& entity) const;
    /// The identifier that the text names; none when it is malformed or names another store or entity.
    /// Whether the object still exists is not looked up. Any thread.
    std::optional<ManagedObjectID> managedObjectIDForURIRepresentation(std::string_view text) const;

    /// For contexts. None before a store was added.
    const std::shared_ptr<sqlite::Store>& store() const { return store_; }

  private:
    std::shared_ptr<const ManagedObjectModel> model_;
    std::vector<const EntityClass*> classes_;  // by entity index
    std::shared_ptr<sqlite::Store> store_;
};

}  // namespace orvane
