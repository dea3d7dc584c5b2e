#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "persistence/managed_object_context.h"
#include "store/orvane_app.h"
#include "store/orvane_group.h"
#include "store/orvane_recording.h"

namespace orvane::bench {

/// The library's model resource. Throws std::runtime_error when it is missing.
std::shared_ptr<const ManagedObjectModel> loadModel();

/// A store opened as the library opens its own, with one main context. What goes wrong throws
/// std::runtime_error.
class LibraryStore {
  public:
    LibraryStore(const std::filesystem::path& file, std::shared_ptr<const ManagedObjectModel> model,
                 const std::string& fileSystem = {});

    ManagedObjectContext& context() { return *context_; }
    PersistentStoreCoordinator& coordinator() { return *coordinator_; }

    /// The application of that identifier, looked up as the tracker does.
    Ref<OrvaneApp> application(const std::string& identifier);
    void save();

  private:
    std::shared_ptr<PersistentStoreCoordinator> coordinator_;
    std::unique_ptr<ManagedObjectContext> context_;
};

/// Fetches without leaving out errors: throws std::runtime_error.
template <class T>
std::vector<Ref<T>> fetchAll(ManagedObjectContext& context, const FetchRequest& request) {
    Error error;
    std::vector<Ref<T>> result = context.fetch<T>(request, &error);
    if (error) throw std::runtime_error(error.localizedDescription());
    return result;
}

}  // namespace orvane::bench
