#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/internal.h"

namespace orvane {

/// An SQLite file system (VFS) whose files lie in memory and last as long as this object. Locks, journals and
/// what several connections see of each other are as on a disk. It is not registered with SQLite: it serves
/// as the layer below another. Any thread.
class MemoryFileSystem {
  public:
    MemoryFileSystem();
    MemoryFileSystem(const MemoryFileSystem&) = delete;
    MemoryFileSystem& operator=(const MemoryFileSystem&) = delete;

    sqlite3_vfs* vfs() { return &vfs_; }
    /// Puts these files, by path, in the place of all there are. Databases that are open keep the old ones.
    void setFiles(const std::map<std::string, std::vector<std::uint8_t>>& files);
    /// Bytes that SQLite has to allot for an open file.
    static int fileSize();

  private:
    struct Content;
    struct File;
    struct Calls;

    /// None when there is no such file and none may be made.
    std::shared_ptr<Content> content(std::string_view path, bool create);

    std::mutex mutex_;
    std::map<std::string, std::shared_ptr<Content>, std::less<>> files_;
    sqlite3_vfs vfs_;
};

}  // namespace orvane
