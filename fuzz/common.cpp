#include "fuzz/common.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "store/orvane_app.h"
#include "store/orvane_group.h"
#include "store/orvane_recording.h"

namespace orvane::fuzz {

void demand(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

MemoryFile::MemoryFile(std::string_view bytes) : descriptor_(::memfd_create("input", MFD_CLOEXEC)) {
    demand(descriptor_ >= 0 &&
               ::write(descriptor_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()),
           "there is memory for a file");
}

MemoryFile::~MemoryFile() { ::close(descriptor_); }

std::filesystem::path MemoryFile::path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

ScratchFolder::ScratchFolder() {
    const bool hasMemory = ::access("/dev/shm", W_OK | X_OK) == 0;
    std::string pattern = hasMemory
                              ? std::string("/dev/shm/orvane-fuzz-XXXXXX")
                              : (std::filesystem::temp_directory_path() / "orvane-fuzz-XXXXXX").string();
    demand(::mkdtemp(pattern.data()) != nullptr, "there is a folder for temporary files");
    path_ = pattern;
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

const std::shared_ptr<const ManagedObjectModel>& libraryModel() {
    static const auto model =
        ManagedObjectModel::modelWithContentsOfURL(ORVANE_SOURCE_DIR "/store/Orvane.momd");
    demand(model != nullptr, "the library's model can be read");
    return model;
}

std::shared_ptr<PersistentStoreCoordinator> openStore(const std::filesystem::path& file,
                                                      const std::string& fileSystem) {
    auto coordinator = std::make_shared<PersistentStoreCoordinator>(
        libraryModel(),
        std::vector<const EntityClass*>{&entityClass<OrvaneApp>(), &entityClass<OrvaneGroup>(),
                                        &entityClass<OrvaneRecording>()});
    PersistentStoreOptions options;
    options.migratePersistentStoresAutomatically = true;
    options.inferMappingModel = true;
    options.fileSystem = fileSystem;
    return coordinator->addPersistentStore(NSSQLiteStoreType, {}, file, options) ? coordinator : nullptr;
}

MemoryStore::MemoryStore() : context_(std::make_unique<ManagedObjectContext>()) {
    fileSystem_.keepInMemory(folder_.path());
    auto coordinator = openStore(folder_.path() / "store.db", fileSystem_.name());
    demand(coordinator != nullptr, "a store in memory can be made");
    context_->setPersistentStoreCoordinator(std::move(coordinator));
}

MemoryStore::~MemoryStore() { context_.reset(); }

}  // namespace orvane::fuzz
