#include "platform/simulated/file_system_shim.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <optional>

namespace orvane {

// SQLite allots `szOsFile` bytes for an open file: ours come first, those of the usual file system after
// them.
struct FileSystemShim::File {
    sqlite3_file base;
    FileSystemShim* shim;
    std::optional<FileKind> kind;  // none: passed on unasked
    std::string path;

    sqlite3_file* usual() { return reinterpret_cast<sqlite3_file*>(reinterpret_cast<char*>(this) + size()); }
    static constexpr std::size_t size() { return (sizeof(File) + 15) / 16 * 16; }
};

struct FileSystemShim::Calls {
    static File& ours(sqlite3_file* file) { return *reinterpret_cast<File*>(file); }
    static sqlite3_file* usual(sqlite3_file* file) { return ours(file).usual(); }
    static FileSystemShim& shim(sqlite3_vfs* vfs) { return *static_cast<FileSystemShim*>(vfs->pAppData); }

    static FileVerdict ask(sqlite3_file* file, FileRequest request) {
        File& f = ours(file);
        if (!f.kind) return SQLITE_OK;
        request.kind = *f.kind;
        request.path = f.path;
        return f.shim->judge(request);
    }

    static int close(sqlite3_file* file) {
        File& f = ours(file);
        if (f.kind) f.shim->closed(*f.kind, f.path);
        const int result = f.usual()->pMethods ? f.usual()->pMethods->xClose(f.usual()) : SQLITE_OK;
        f.~File();
        return result;
    }
    static int read(sqlite3_file* file, void* buffer, int amount, sqlite3_int64 offset) {
        const FileVerdict verdict = ask(file, {.operation = FileOperation::read,
                                               .kind = {},
                                               .path = {},
                                               .offset = offset,
                                               .size = static_cast<std::size_t>(amount)});
        const int wanted = verdict.result ? static_cast<int>(verdict.bytesDone) : amount;
        if (verdict.result && wanted == 0) return verdict.result;
        const int result = usual(file)->pMethods->xRead(usual(file), buffer, wanted, offset);
        return verdict.result ? verdict.result : result;
    }
    static int write(sqlite3_file* file, const void* buffer, int amount, sqlite3_int64 offset) {
        const auto size = static_cast<std::size_t>(amount);
        const FileVerdict verdict = ask(file, {.operation = FileOperation::write,
                                               .kind = {},
                                               .path = {},
                                               .offset = offset,
                                               .size = size,
                                               .bytes = {static_cast<const std::uint8_t*>(buffer), size}});
        const int wanted = verdict.result ? static_cast<int>(verdict.bytesDone) : amount;
        if (verdict.result && wanted == 0) return verdict.result;
        const int result = usual(file)->pMethods->xWrite(usual(file), buffer, wanted, offset);
        return verdict.result ? verdict.result : result;
    }
    static int truncate(sqlite3_file* file, sqlite3_int64 size) {
        const int refused =
            ask(file, {.operation = FileOperation::truncate, .kind = {}, .path = {}, .offset = size}).result;
        return refused ? refused : usual(file)->pMethods->xTruncate(usual(file), size);
    }
    static int sync(sqlite3_file* file, int flags) {
        const int refused = ask(file, {.operation = FileOperation::sync, .kind = {}, .path = {}}).result;
        return refused ? refused : usual(file)->pMethods->xSync(usual(file), flags);
    }
    static int fileSize(sqlite3_file* file, sqlite3_int64* size) {
        return usual(file)->pMethods->xFileSize(usual(file), size);
    }
    static int lock(sqlite3_file* file, int level) {
        return usual(file)->pMethods->xLock(usual(file), level);
    }
    static int unlock(sqlite3_file* file, int level) {
        return usual(file)->pMethods->xUnlock(usual(file), level);
    }
    static int checkReservedLock(sqlite3_file* file, int* result) {
        return usual(file)->pMethods->xCheckReservedLock(usual(file), result);
    }
    static int fileControl(sqlite3_file* file, int operation, void* argument) {
        return usual(file)->pMethods->xFileControl(usual(file), operation, argument);
    }
    static int sectorSize(sqlite3_file* file) { return usual(file)->pMethods->xSectorSize(usual(file)); }
    static int deviceCharacteristics(sqlite3_file* file) {
        return ours(file).shim->characteristics(usual(file)->pMethods->xDeviceCharacteristics(usual(file)));
    }
    static int shmMap(sqlite3_file* file, int region, int size, int extend, void volatile** memory) {
        return usual(file)->pMethods->xShmMap(usual(file), region, size, extend, memory);
    }
    static int shmLock(sqlite3_file* file, int offset, int count, int flags) {
        return usual(file)->pMethods->xShmLock(usual(file), offset, count, flags);
    }
    static void shmBarrier(sqlite3_file* file) { usual(file)->pMethods->xShmBarrier(usual(file)); }
    static int shmUnmap(sqlite3_file* file, int remove) {
        return usual(file)->pMethods->xShmUnmap(usual(file), remove);
    }

    static std::optional<FileKind> kindOf(int flags) {
        if (flags & SQLITE_OPEN_MAIN_DB) return FileKind::database;
        if (flags & (SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_SUPER_JOURNAL | SQLITE_OPEN_WAL))
            return FileKind::journal;
        return std::nullopt;
    }

    static int open(sqlite3_vfs* vfs, sqlite3_filename name, sqlite3_file* file, int flags, int* outFlags) {
        FileSystemShim& self = shim(vfs);
        // SQLite closes a file whose methods are set, even when opening it failed.
        file->pMethods = nullptr;
        const std::optional<FileKind> kind = name ? kindOf(flags) : std::nullopt;
        if (kind) {
            const int refused = self.judge({.operation = FileOperation::open,
                                            .kind = *kind,
                                            .path = name,
                                            .creates = (flags & SQLITE_OPEN_CREATE) != 0})
                                    .result;
            if (refused) return refused;
        }
        File* f = new (file) File{{nullptr}, &self, kind, name ? name : ""};
        sqlite3_vfs* below = self.below(f->path);
        // What is on the disk is in memory too: the library makes the empty file of a new database itself.
        int exists = 0;
        if (below != self.usual_ && kind == FileKind::database)
            self.usual_->xAccess(self.usual_, name, SQLITE_ACCESS_READWRITE, &exists);
        if (exists) flags |= SQLITE_OPEN_CREATE;
        const int result = below->xOpen(below, name, f->usual(), flags, outFlags);
        if (result != SQLITE_OK) {
            if (f->usual()->pMethods) f->usual()->pMethods->xClose(f->usual());
            f->~File();
            file->pMethods = nullptr;
            return result;
        }
        f->base.pMethods = &methods;
        if (kind) self.opened(*kind, f->path);
        return SQLITE_OK;
    }
    static int remove(sqlite3_vfs* vfs, const char* name, int syncFolder) {
        FileSystemShim& self = shim(vfs);
        // Only journals are ever removed.
        const int refused = self.judge({.operation = FileOperation::remove,
                                        .kind = FileKind::journal,
                                        .path = name,
                                        .syncsFolder = syncFolder != 0})
                                .result;
        if (refused) return refused;
        sqlite3_vfs* below = self.below(name);
        return below->xDelete(below, name, syncFolder);
    }
    static int access(sqlite3_vfs* vfs, const char* name, int flags, int* result) {
        sqlite3_vfs* below = shim(vfs).below(name);
        return below->xAccess(below, name, flags, result);
    }

    // The rest of a VFS needs the usual one as its first argument.
    template <auto member, class... Arguments>
    static auto pass(sqlite3_vfs* vfs, Arguments... arguments) {
        sqlite3_vfs* usualVfs = shim(vfs).usual_;
        return (usualVfs->*member)(usualVfs, arguments...);
    }

    // Its type is a function that yields a function, which the template above cannot spell.
    static void (*dlSym(sqlite3_vfs* vfs, void* library, const char* symbol))() {
        return shim(vfs).usual_->xDlSym(shim(vfs).usual_, library, symbol);
    }

    static const sqlite3_io_methods methods;
};

// Version 2: without memory mapping, so that every read passes through here.
const sqlite3_io_methods FileSystemShim::Calls::methods = {2,
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
                                                           shmMap,
                                                           shmLock,
                                                           shmBarrier,
                                                           shmUnmap,
                                                           nullptr,
                                                           nullptr};

FileSystemShim::FileSystemShim() : usual_(nullptr), vfs_{} {
    static std::atomic<unsigned> made = 0;
    name_ = "orvane-simulated-" + std::to_string(++made);
    // Initialises SQLite, without which there is no usual file system yet.
    usual_ = sqlite3_vfs_find(nullptr);
    vfs_ = *usual_;
    vfs_.iVersion = 2;
    vfs_.szOsFile = static_cast<int>(File::size()) + std::max(usual_->szOsFile, MemoryFileSystem::fileSize());
    vfs_.pNext = nullptr;
    vfs_.zName = name_.c_str();
    vfs_.pAppData = this;
    vfs_.xOpen = Calls::open;
    vfs_.xDelete = Calls::remove;
    vfs_.xAccess = Calls::access;
    vfs_.xFullPathname = Calls::pass<&sqlite3_vfs::xFullPathname, const char*, int, char*>;
    vfs_.xDlOpen = Calls::pass<&sqlite3_vfs::xDlOpen, const char*>;
    vfs_.xDlError = Calls::pass<&sqlite3_vfs::xDlError, int, char*>;
    vfs_.xDlSym = Calls::dlSym;
    vfs_.xDlClose = Calls::pass<&sqlite3_vfs::xDlClose, void*>;
    vfs_.xRandomness = Calls::pass<&sqlite3_vfs::xRandomness, int, char*>;
    vfs_.xSleep = Calls::pass<&sqlite3_vfs::xSleep, int>;
    vfs_.xCurrentTime = Calls::pass<&sqlite3_vfs::xCurrentTime, double*>;
    vfs_.xGetLastError = Calls::pass<&sqlite3_vfs::xGetLastError, int, char*>;
    vfs_.xCurrentTimeInt64 = Calls::pass<&sqlite3_vfs::xCurrentTimeInt64, sqlite3_int64*>;
    sqlite3_vfs_register(&vfs_, 0);
}

FileSystemShim::~FileSystemShim() { sqlite3_vfs_unregister(&vfs_); }

void FileSystemShim::keepInMemory(const std::string& folder) {
    memory_ = std::make_unique<MemoryFileSystem>();
    memoryFolder_ = folder.ends_with('/') ? folder : folder + '/';
}

sqlite3_vfs* FileSystemShim::below(std::string_view path) const {
    return memory_ && path.starts_with(memoryFolder_) ? memory_->vfs() : usual_;
}

}  // namespace orvane
