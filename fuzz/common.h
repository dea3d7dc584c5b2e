#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "persistence/managed_object_context.h"
#include "persistence/model.h"
#include "platform/simulated/failing_file_system.h"

namespace orvane::fuzz {

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Ends the process, as something that must hold does not.
void demand(bool holds, const char* what);

/// A file in memory that is read by its path.
class MemoryFile {
  public:
    explicit MemoryFile(std::string_view bytes);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    std::filesystem::path path() const;

  private:
    int descriptor_;
};

/// An empty folder, in memory where the system has such, that goes away with all it holds.
class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

const std::shared_ptr<const ManagedObjectModel>& libraryModel();

/// A coordinator with a database of the library's model; none when it cannot be opened.
std::shared_ptr<PersistentStoreCoordinator> openStore(const std::filesystem::path& file,
                                                      const std::string& fileSystem = {});

/// A new store whose database never reaches the disk.
class MemoryStore {
  public:
    MemoryStore();
    ~MemoryStore();
    ManagedObjectContext& context() { return *context_; }

  private:
    ScratchFolder folder_;
    FailingFileSystem fileSystem_;
    std::unique_ptr<ManagedObjectContext> context_;
};

}  // namespace orvane::fuzz
