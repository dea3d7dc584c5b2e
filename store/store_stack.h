#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "foundation/error.h"
#include "persistence/persistent_store_coordinator.h"
#include "store/orvane_managed_object_context.h"

namespace orvane {

/// Domain and codes of the errors that the store stack itself finds.
inline constexpr const char* storeStackErrorDomain = "YOUR_ERROR_DOMAIN";
enum StoreStackErrorCode : int {
    fileInPlaceOfFolderError = 101,
    storeNotInitializedError = 9999,
};

/// Finds, opens or creates the one database, and hands out the main context. Each piece is built when it is
/// first asked for and kept from then on. One that cannot be built is none: the error is shown through the
/// host application, nothing is kept, and the next call tries again. Main thread only.
class ORVANE_EXPORT StoreStack {
  public:
    StoreStack();
    ~StoreStack();
    StoreStack(const StoreStack&) = delete;
    StoreStack& operator=(const StoreStack&) = delete;

    /// Folder that holds the database instead of the default one. Read when the database is opened; later
    /// changes do not touch it.
    const std::optional<std::filesystem::path>& url() const { return url_; }
    void setUrl(std::optional<std::filesystem::path> url) { url_ = std::move(url); }

    std::shared_ptr<const ManagedObjectModel> managedObjectModel();
    /// The default folder, whether it exists or not; empty when the user has no folder for application data.
    std::filesystem::path applicationFilesDirectory() const;
    /// With the database attached.
    std::shared_ptr<PersistentStoreCoordinator> persistentStoreCoordinator();
    /// Owned by the stack.
    OrvaneManagedObjectContext* managedObjectContext();
    /// Looks whether the database that is open was deleted, moved or replaced. If so, that is shown, the one
    /// that stands in its place is opened or a new one is made, and the main context starts afresh on it:
    /// objects and changes that it held are gone. False when none can be opened; the next call tries again.
    bool followFile();
    /// The main context if it was built already.
    OrvaneManagedObjectContext* existingManagedObjectContext() const { return context_.get(); }

  private:
    std::optional<std::filesystem::path> usableFolder() const;

    std::optional<std::filesystem::path> url_;
    std::shared_ptr<const ManagedObjectModel> model_;
    std::shared_ptr<PersistentStoreCoordinator> coordinator_;
    std::unique_ptr<OrvaneManagedObjectContext> context_;
};

}  // namespace orvane
