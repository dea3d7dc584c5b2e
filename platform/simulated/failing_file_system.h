#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "foundation/export.h"

namespace orvane {

/// A file system for databases that does what the usual one does until it is told to fail, as a disk does
/// that is gone or full. Name it when opening an SQLite database. It may be told at any time and on any
/// thread; at first everything works.
class ORVANE_EXPORT FailingFileSystem {
  public:
    FailingFileSystem();
    /// No database may be open through it any more.
    ~FailingFileSystem();
    FailingFileSystem(const FailingFileSystem&) = delete;
    FailingFileSystem& operator=(const FailingFileSystem&) = delete;

    /// The name it is registered under; unlike that of any other.
    const std::string& name() const;

    /// While any of the three fails a database cannot be opened. One that is open stays open, and further
    /// connections to it can be made.
    void setOpenFails(bool fails) { openFails_ = fails; }
    /// Reading from databases and their journals fails; hence writing too, which has to read.
    void setReadsFail(bool fails) { readsFail_ = fails; }
    /// Writing to databases fails, and so does everything else that changes their files.
    void setWritesFail(bool fails) { writesFail_ = fails; }

    /// Keeps the databases in the folder in memory instead of on the disk: good for files that do not outlive
    /// the program. Call before any is opened; once.
    void keepInMemory(const std::string& folder);

    bool openFails() const { return openFails_; }
    bool readsFail() const { return readsFail_; }
    bool writesFail() const { return writesFail_; }

  private:
    class Shim;

    std::atomic<bool> openFails_ = false;
    std::atomic<bool> readsFail_ = false;
    std::atomic<bool> writesFail_ = false;
    std::unique_ptr<Shim> shim_;
};

}  // namespace orvane
