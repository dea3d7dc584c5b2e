#include "platform/simulated/memory_file_system.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

namespace orvane {

/// A file's bytes, in blocks so that growing copies nothing, and who has locked it. A journal is made anew
/// for every transaction, so the blocks are small.
struct MemoryFileSystem::Content {
    static constexpr sqlite3_int64 blockSize = 4096;
    using Block = std::array<std::uint8_t, blockSize>;

    std::mutex mutex;
    std::vector<std::unique_ptr<Block>> blocks;  // zero beyond `size`
    sqlite3_int64 size = 0;

    int readers = 0;                 // files with any lock
    const File* reserved = nullptr;  // the one that may become the writer
    const File* pending = nullptr;   // the one that lets no further readers in

    void resize(sqlite3_int64 newSize) {
        if (newSize < size)
            forEachPart(newSize, size - newSize,
                        [](std::uint8_t* bytes, std::size_t count) { std::fill_n(bytes, count, 0); });
        blocks.resize(static_cast<std::size_t>((newSize + blockSize - 1) / blockSize));
        for (auto& block : blocks)
            if (!block) block = std::make_unique<Block>();
        size = newSize;
    }

    /// Goes through a range of the file, block by block.
    template <class Visit>
    void forEachPart(sqlite3_int64 offset, sqlite3_int64 count, Visit visit) {
        while (count > 0) {
            const sqlite3_int64 within = offset % blockSize;
            const sqlite3_int64 part = std::min(count, blockSize - within);
            visit(blocks[static_cast<std::size_t>(offset / blockSize)]->data() + within,
                  static_cast<std::size_t>(part));
            offset += part;
            count -= part;
        }
    }
};

struct MemoryFileSystem::File {
    sqlite3_file base;
    std::shared_ptr<Content> content;
    int lock;  // SQLITE_LOCK_…
};

struct MemoryFileSystem::Calls {
    static File& ours(sqlite3_file* file) { return *reinterpret_cast<File*>(file); }
    static MemoryFileSystem& system(sqlite3_vfs* vfs) {
        return *static_cast<MemoryFileSystem*>(vfs->pAppData);
    }

    static int open(sqlite3_vfs* vfs, sqlite3_filename name, sqlite3_file* file, int flags, int* outFlags) {
        file->pMethods = nullptr;
        auto content =
            name ? system(vfs).content(name, (flags & SQLITE_OPEN_CREATE) != 0) : std::make_shared<Content>();
        if (!content) return SQLITE_CANTOPEN;
        new (file) File{{&methods}, std::move(content), SQLITE_LOCK_NONE};
        if (outFlags) *outFlags = flags;
        return SQLITE_OK;
    }
    static int close(sqlite3_file* file) {
        unlock(file, SQLITE_LOCK_NONE);
        ours(file).~File();
        return SQLITE_OK;
    }
    static int remove(sqlite3_vfs* vfs, const char* name, int) {
        const std::lock_guard guard(system(vfs).mutex_);
        const auto found = system(vfs).files_.find(std::string_view(name));
        if (found == system(vfs).files_.end()) return SQLITE_IOERR_DELETE_NOENT;
        system(vfs).files_.erase(found);
        return SQLITE_OK;
    }
    static int access(sqlite3_vfs* vfs, const char* name, int, int* result) {
        // As on a disk, an empty file is no journal to be played back.
        const auto content = system(vfs).content(name, false);
        *result = 0;
        if (!content) return SQLITE_OK;
        const std::lock_guard guard(content->mutex);
        *result = content->size > 0;
        return SQLITE_OK;
    }

    static int read(sqlite3_file* file, void* buffer, int amount, sqlite3_int64 offset) {
        Content& content = *ours(file).content;
        const std::lock_guard guard(content.mutex);
        auto* target = static_cast<std::uint8_t*>(buffer);
        const sqlite3_int64 there = std::clamp<sqlite3_int64>(content.size - offset, 0, amount);
        content.forEachPart(offset, there, [&](const std::uint8_t* bytes, std::size_t count) {
            std::memcpy(target, bytes, count);
            target += count;
        });
        if (there == amount) return SQLITE_OK;
        // SQLite counts on zeros behind the end of a file.
        std::fill_n(target, amount - there, 0);
        return SQLITE_IOERR_SHORT_READ;
    }
    static int write(sqlite3_file* file, const void* buffer, int amount, sqlite3_int64 offset) try {
        Content& content = *ours(file).content;
        const std::lock_guard guard(content.mutex);
        if (offset + amount > content.size) content.resize(offset + amount);
        const auto* source = static_cast<const std::uint8_t*>(buffer);
        content.forEachPart(offset, amount, [&](std::uint8_t* bytes, std::size_t count) {
            std::memcpy(bytes, source, count);
            source += count;
        });
        return SQLITE_OK;
    } catch (const std::bad_alloc&) {
        return SQLITE_FULL;
    }
    static int truncate(sqlite3_file* file, sqlite3_int64 size) {
        Content& content = *ours(file).content;
        const std::lock_guard guard(content.mutex);
        if (size < content.size) content.resize(size);
        return SQLITE_OK;
    }
    static int sync(sqlite3_file*, int) { return SQLITE_OK; }
    static int fileSize(sqlite3_file* file, sqlite3_int64* size) {
        Content& content = *ours(file).content;
        const std::lock_guard guard(content.mutex);
        *size = content.size;
        return SQLITE_OK;
    }

    // The locks of SQLite's own file systems: any number share, one of them reserves the right to write, and
    // writes once all others are gone.
    static int lock(sqlite3_file* file, int level) {
        File& f = ours(file);
        if (f.lock >= level) return SQLITE_OK;
        Content& content = *f.content;
        const std::lock_guard guard(content.mutex);
        if (level == SQLITE_LOCK_SHARED) {
            if (content.pending) return SQLITE_BUSY;
            ++content.readers;
            f.lock = level;
            return SQLITE_OK;
        }
        // Without the first lock of the two, the journal of a crash is to be played back.
        if ((content.reserved && content.reserved != &f) || (content.pending && content.pending != &f))
            return SQLITE_BUSY;
        if (level == SQLITE_LOCK_RESERVED) {
            content.reserved = &f;
            f.lock = level;
            return SQLITE_OK;
        }
        content.pending = &f;
        f.lock = SQLITE_LOCK_PENDING;
        if (content.readers > 1) return SQLITE_BUSY;
        f.lock = level;
        return SQLITE_OK;
    }
    static int unlock(sqlite3_file* file, int level) {
        File& f = ours(file);
        if (f.lock <= level) return SQLITE_OK;
        Content& content = *f.content;
        const std::lock_guard guard(content.mutex);
        if (content.reserved == &f) content.reserved = nullptr;
        if (content.pending == &f) content.pending = nullptr;
        if (level == SQLITE_LOCK_NONE) --content.readers;
        f.lock = level;
        return SQLITE_OK;
    }
    static int checkReservedLock(sqlite3_file* file, int* result) {
        Content& content = *ours(file).content;
        const std::lock_guard guard(content.mutex);
        *result = content.reserved || content.pending;
        return SQLITE_OK;
    }

    static int fileControl(sqlite3_file*, int, void*) { return SQLITE_NOTFOUND; }
    static int sectorSize(sqlite3_file*) { return 4096; }
    static int deviceCharacteristics(sqlite3_file*) {
        return SQLITE_IOCAP_POWERSAFE_OVERWRITE | SQLITE_IOCAP_SAFE_APPEND | SQLITE_IOCAP_SEQUENTIAL;
    }

    static const sqlite3_io_methods methods;
};

// Version 1: neither shared memory, which only write-ahead logs need, nor memory mapping.
const sqlite3_io_methods MemoryFileSystem::Calls::methods = {1,
                                                             close,
                                                             read,
                                                             write,
                                                             truncate,
                                                             sync,
                                                             fileSize,
                                                             lock,
                                                             unlock,
                                                             checkReservedLock,
                                                             fileControl,
                                                             sectorSize,
                                                             deviceCharacteristics,
                                                             nullptr,
                                                             nullptr,
                                                             nullptr,
                                                             nullptr,
                                                             nullptr,
                                                             nullptr};

MemoryFileSystem::MemoryFileSystem() : vfs_(*sqlite3_vfs_find(nullptr)) {
    vfs_.iVersion = 2;
    vfs_.szOsFile = fileSize();
    vfs_.pNext = nullptr;
    vfs_.zName = "orvane-memory";
    vfs_.pAppData = this;
    vfs_.xOpen = Calls::open;
    vfs_.xDelete = Calls::remove;
    vfs_.xAccess = Calls::access;
}

void MemoryFileSystem::setFiles(const std::map<std::string, std::vector<std::uint8_t>>& files) {
    std::map<std::string, std::shared_ptr<Content>, std::less<>> made;
    for (const auto& [path, bytes] : files) {
        auto content = std::make_shared<Content>();
        const auto size = static_cast<sqlite3_int64>(bytes.size());
        content->resize(size);
        const std::uint8_t* source = bytes.data();
        content->forEachPart(0, size, [&](std::uint8_t* target, std::size_t count) {
            std::memcpy(target, source, count);
            source += count;
        });
        made.emplace(path, std::move(content));
    }
    const std::lock_guard guard(mutex_);
    files_ = std::move(made);
}

int MemoryFileSystem::fileSize() { return sizeof(File); }

std::shared_ptr<MemoryFileSystem::Content> MemoryFileSystem::content(std::string_view path, bool create) {
    const std::lock_guard guard(mutex_);
    const auto found = files_.find(path);
    if (found != files_.end()) return found->second;
    return create ? files_.emplace(path, std::make_shared<Content>()).first->second : nullptr;
}

}  // namespace orvane
