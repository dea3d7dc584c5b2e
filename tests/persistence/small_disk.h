#pragma once

#include <sqlite3.h>

namespace orvane::test {

/// A disk with room for some more bytes, as a file system that SQLite can be told to use. What would make a
/// file larger than the room that is left fails as on a full disk; bytes that stand already may be written
/// over.
class SmallDisk {
  public:
    explicit SmallDisk(sqlite3_int64 room);
    ~SmallDisk() { sqlite3_vfs_unregister(&fileSystem_); }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    static constexpr const char* name = "small-disk";

    /// False, and nothing is taken, when there is not that much room.
    bool take(sqlite3_int64 bytes);

  private:
    sqlite3_vfs fileSystem_;
    sqlite3_int64 room_;
};

}  // namespace orvane::test
