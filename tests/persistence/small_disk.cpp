#include "tests/persistence/small_disk.h"

#include <algorithm>

namespace orvane::test {

namespace {

/// What SQLite holds as a file; the true one follows it in memory.
struct DiskFile {
    sqlite3_file base;
    SmallDisk* disk;

    sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

DiskFile& diskFile(sqlite3_file* file) { return *reinterpret_cast<DiskFile*>(file); }
sqlite3_file* real(sqlite3_file* file) { return diskFile(file).real(); }

int write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
    sqlite3_int64 size = 0;
    if (const int code = real(file)->pMethods->xFileSize(real(file), &size)) return code;
    if (!diskFile(file).disk->take(std::max<sqlite3_int64>(0, offset + count - size))) return SQLITE_FULL;
    return real(file)->pMethods->xWrite(real(file), bytes, count, offset);
}

const sqlite3_io_methods methods{
    .iVersion = 1,
    .xClose = [](sqlite3_file* file) { return real(file)->pMethods->xClose(real(file)); },
    .xRead =
        [](sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset) {
            return real(file)->pMethods->xRead(real(file), bytes, count, offset);
        },
    .xWrite = write,
    .xTruncate = [](sqlite3_file* file,
                    sqlite3_int64 size) { return real(file)->pMethods->xTruncate(real(file), size); },
    .xSync = [](sqlite3_file* file, int flags) { return real(file)->pMethods->xSync(real(file), flags); },
    .xFileSize = [](sqlite3_file* file,
                    sqlite3_int64* size) { return real(file)->pMethods->xFileSize(real(file), size); },
    .xLock = [](sqlite3_file* file, int lock) { return real(file)->pMethods->xLock(real(file), lock); },
    .xUnlock = [](sqlite3_file* file, int lock) { return real(file)->pMethods->xUnlock(real(file), lock); },
    .xCheckReservedLock =
        [](sqlite3_file* file, int* held) {
            return real(file)->pMethods->xCheckReservedLock(real(file), held);
        },
    // No hints about sizes to come: they would let the file grow without a write.
    .xFileControl = [](sqlite3_file*, int, void*) { return SQLITE_NOTFOUND; },
    .xSectorSize = [](sqlite3_file* file) { return real(file)->pMethods->xSectorSize(real(file)); },
    .xDeviceCharacteristics =
        [](sqlite3_file* file) { return real(file)->pMethods->xDeviceCharacteristics(real(file)); },
    .xShmMap = nullptr,
    .xShmLock = nullptr,
    .xShmBarrier = nullptr,
    .xShmUnmap = nullptr,
    .xFetch = nullptr,
    .xUnfetch = nullptr,
};

int open(sqlite3_vfs* fileSystem, const char* path, sqlite3_file* file, int flags, int* outFlags) {
    DiskFile& opened = diskFile(file);
    opened.base.pMethods = nullptr;
    opened.disk = static_cast<SmallDisk*>(fileSystem->pAppData);
    sqlite3_vfs* usual = sqlite3_vfs_find(nullptr);
    const int code = usual->xOpen(usual, path, opened.real(), flags, outFlags);
    if (opened.real()->pMethods) opened.base.pMethods = &methods;
    return code;
}

}  // namespace

SmallDisk::SmallDisk(sqlite3_int64 room) : fileSystem_(*sqlite3_vfs_find(nullptr)), room_(room) {
    fileSystem_.szOsFile += static_cast<int>(sizeof(DiskFile));
    fileSystem_.pNext = nullptr;
    fileSystem_.zName = name;
    fileSystem_.pAppData = this;
    fileSystem_.xOpen = open;
    sqlite3_vfs_register(&fileSystem_, 0);
}

bool SmallDisk::take(sqlite3_int64 bytes) {
    if (bytes > room_) return false;
    room_ -= bytes;
    return true;
}

}  // namespace orvane::test
