#include "store/store_stack.h"

#include <stdexcept>
#include <utility>

#include "persistence/persistence_errors.h"
#include "platform/platform.h"
#include "store/orvane_app.h"
#include "store/orvane_group.h"
#include "store/orvane_recording.h"

namespace orvane {

namespace {

void present(const Error& error) { Platform::current().hostApplication().presentError(error); }

}  // namespace

StoreStack::StoreStack() = default;
StoreStack::~StoreStack() = default;

std::shared_ptr<const ManagedObjectModel> StoreStack::managedObjectModel() {
    if (model_) return model_;
    if (const auto location = Platform::current().fileManager().URLForResource("Orvane", "momd"))
        model_ = ManagedObjectModel::modelWithContentsOfURL(*location);
    return model_;
}

std::filesystem::path StoreStack::applicationFilesDirectory() const {
    const auto folders = Platform::current().fileManager().applicationSupportDirectories();
    return folders.empty() ? std::filesystem::path() : folders.back() / "Orvane";
}

std::optional<std::filesystem::path> StoreStack::usableFolder() const {
    FileManager& files = Platform::current().fileManager();
    const std::filesystem::path folder = url_ ? *url_ : applicationFilesDirectory();
    Error error;
    const std::optional<bool> isDirectory = files.isDirectory(folder, &error);
    if (!isDirectory) {
        if (error.code() == fileReadNoSuchFileError && files.createDirectory(folder, &error)) return folder;
        present(error);
        return std::nullopt;
    }
    if (!*isDirectory) {
        present(
            Error(storeStackErrorDomain, fileInPlaceOfFolderError,
                  "Expected a folder to store application data, found a file (" + folder.string() + ")."));
        return std::nullopt;
    }
    // A folder that the host named may be shared on purpose; ours is not.
    if (!url_) files.restrictToUser(folder);
    return folder;
}

std::shared_ptr<PersistentStoreCoordinator> StoreStack::persistentStoreCoordinator() {
    if (coordinator_) return coordinator_;
    Platform& platform = Platform::current();
    const auto model = managedObjectModel();
    if (!model) {
        platform.logSink().log("Orvane:persistentStoreCoordinator No model to generate a store from");
        return nullptr;
    }
    const auto folder = usableFolder();
    if (!folder) return nullptr;

    PersistentStoreOptions options;
    options.migratePersistentStoresAutomatically = true;
    options.inferMappingModel = true;
    // One file: the journal lives beside it for the length of a transaction only.
    options.pragmas["journal_mode"] = "DELETE";
    options.fileSystem = platform.fileManager().databaseFileSystem();

    std::shared_ptr<PersistentStoreCoordinator> coordinator;
    try {
        coordinator = std::make_shared<PersistentStoreCoordinator>(
            model, std::vector<const EntityClass*>{&entityClass<OrvaneApp>(), &entityClass<OrvaneGroup>(),
                                                   &entityClass<OrvaneRecording>()});
    } catch (const std::logic_error& mismatch) {
        // The model is a file beside the library: another version of it may lie there.
        present(Error(persistenceErrorDomain, modelMalformedError, mismatch.what()));
        return nullptr;
    }
    Error error;
    if (!coordinator->addPersistentStore(NSSQLiteStoreType, {}, *folder / "Orvaning.db", options, &error)) {
        present(error);
        return nullptr;
    }
    coordinator_ = std::move(coordinator);
    return coordinator_;
}

bool StoreStack::followFile() {
    Error error;
    if (!coordinator_ || !coordinator_->isStoreMoved(&error)) return true;
    present(error);
    const auto gone = std::exchange(coordinator_, nullptr);
    if (!persistentStoreCoordinator()) {
        coordinator_ = gone;
        return false;
    }
    if (context_) context_->setPersistentStoreCoordinator(coordinator_);
    return true;
}

OrvaneManagedObjectContext* StoreStack::managedObjectContext() {
    if (context_) return context_.get();
    const auto coordinator = persistentStoreCoordinator();
    if (!coordinator) {
        present(Error(storeStackErrorDomain, storeNotInitializedError,
                      Error::UserInfo{{NSLocalizedDescriptionKey, "Failed to initialize the store"},
                                      {NSLocalizedFailureReasonErrorKey,
                                       "There was an error building up the data file."}}));
        return nullptr;
    }
    context_ = std::make_unique<OrvaneManagedObjectContext>(ConcurrencyType::mainQueue);
    context_->setPersistentStoreCoordinator(coordinator);
    context_->setUndoManager(std::make_unique<UndoManager>());
    return context_.get();
}

}  // namespace orvane
