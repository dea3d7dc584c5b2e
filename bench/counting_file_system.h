#pragma once

#include <atomic>
#include <cstddef>

#include "platform/simulated/file_system_shim.h"

namespace orvane::bench {

/// Counts what SQLite does to the files of databases opened through it.
class CountingFileSystem : public FileSystemShim {
  public:
    struct Counts {
        std::size_t syncs = 0;
        std::size_t writes = 0;
    };
    Counts counts() const { return {syncs_, writes_}; }

  protected:
    FileVerdict judge(const FileRequest& request) override {
        switch (request.operation) {
            case FileOperation::sync:
            case FileOperation::remove:  // which syncs the folder
                ++syncs_;
                break;
            case FileOperation::write:
                ++writes_;
                break;
            case FileOperation::open:
            case FileOperation::read:
            case FileOperation::truncate:
                break;
        }
        return SQLITE_OK;
    }

  private:
    std::atomic<std::size_t> syncs_ = 0;
    std::atomic<std::size_t> writes_ = 0;
};

}  // namespace orvane::bench
