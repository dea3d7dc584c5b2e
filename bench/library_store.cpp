#include "bench/library_store.h"

#include "platform/library_resource.h"

namespace orvane::bench {

std::shared_ptr<const ManagedObjectModel> loadModel() {
    const auto folder = libraryResource("Orvane", "momd");
    if (!folder) throw std::runtime_error("the model resource Orvane.momd was not found");
    Error error;
    auto model = ManagedObjectModel::modelWithContentsOfURL(*folder, &error);
    if (!model) throw std::runtime_error(error.localizedDescription());
    return model;
}

LibraryStore::LibraryStore(const std::filesystem::path& file, std::shared_ptr<const ManagedObjectModel> model,
                           const std::string& fileSystem)
    : coordinator_(std::make_shared<PersistentStoreCoordinator>(
          std::move(model),
          std::vector<const EntityClass*>{&entityClass<OrvaneApp>(), &entityClass<OrvaneGroup>(),
                                          &entityClass<OrvaneRecording>()})) {
    PersistentStoreOptions options;
    options.migratePersistentStoresAutomatically = true;
    options.inferMappingModel = true;
    options.pragmas = {{"journal_mode", "DELETE"}};
    options.fileSystem = fileSystem;
    Error error;
    if (!coordinator_->addPersistentStore(NSSQLiteStoreType, "", file, options, &error))
        throw std::runtime_error(file.string() + ": " + error.localizedDescription());
    context_ = std::make_unique<ManagedObjectContext>();
    context_->setPersistentStoreCoordinator(coordinator_);
}

Ref<OrvaneApp> LibraryStore::application(const std::string& identifier) {
    const auto found =
        fetchAll<OrvaneApp>(*context_, {std::string(OrvaneApp::entityName()),
                                        Predicate::withFormat("identifier == %@", {Value(identifier)})});
    return found.empty() ? nullptr : found.front();
}

void LibraryStore::save() {
    Error error;
    if (!context_->save(&error)) throw std::runtime_error(error.localizedDescription());
}

}  // namespace orvane::bench
