#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "foundation/internal.h"
#include "platform/simulated/file_operation.h"
#include "platform/simulated/memory_file_system.h"

namespace orvane {

/// The files of one database: itself, and whatever SQLite keeps beside it to undo or redo a transaction.
enum class FileKind { database, journal };

/// Something that SQLite is about to do to a file.
struct FileRequest {
    FileOperation operation;
    FileKind kind;
    std::string_view path;
    bool creates = false;                      ///< open: the file is made when it is missing
    std::int64_t offset = 0;                   ///< read and write; truncate: the new size
    std::size_t size = 0;                      ///< read and write: number of bytes
    std::span<const std::uint8_t> bytes = {};  ///< write
    bool syncsFolder = false;                  ///< remove: it is to be on the disk when the call returns
};

/// What becomes of a request.
struct FileVerdict {
    FileVerdict(int code) : result(code) {}
    FileVerdict(int code, std::size_t bytes) : result(code), bytesDone(bytes) {}

    int result;                 ///< SQLITE_OK lets it happen; any other code is what SQLite is told instead
    std::size_t bytesDone = 0;  ///< so many bytes of a refused read or write are still read or written
};

/// An SQLite file system (VFS) that passes everything on to the usual one, or to one in memory, after asking
/// `judge`. Temporary files, locks and everything that is no file are passed on unasked.
class FileSystemShim {
  public:
    FileSystemShim();
    virtual ~FileSystemShim();
    FileSystemShim(const FileSystemShim&) = delete;
    FileSystemShim& operator=(const FileSystemShim&) = delete;

    const std::string& name() const { return name_; }

    /// Keeps what lies in the folder in memory instead of on the disk, where at most an empty file stands for
    /// it. Call before anything is opened; once.
    void keepInMemory(const std::string& folder);

  protected:
    /// Any thread.
    virtual FileVerdict judge(const FileRequest& request) = 0;
    /// Told after a database or journal was opened, and before it is closed. Any thread.
    virtual void opened(FileKind, const std::string&) {}
    virtual void closed(FileKind, const std::string&) {}
    /// The guarantees that SQLite may count on (SQLITE_IOCAP_…), given those of the file system below.
    virtual int characteristics(int below) const { return below; }

    /// What is kept in memory; null before `keepInMemory`.
    MemoryFileSystem* memory() { return memory_.get(); }

  private:
    struct File;
    struct Calls;

    /// The file system that the path's file lies in.
    sqlite3_vfs* below(std::string_view path) const;

    std::string name_;
    sqlite3_vfs* usual_;
    std::unique_ptr<MemoryFileSystem> memory_;
    std::string memoryFolder_;  // ends with a slash
    sqlite3_vfs vfs_;
};

}  // namespace orvane
