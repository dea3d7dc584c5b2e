#include "platform/simulated/failing_file_system.h"

#include <map>
#include <mutex>

#include "platform/simulated/file_system_shim.h"

namespace orvane {

class FailingFileSystem::Shim : public FileSystemShim {
  public:
    explicit Shim(FailingFileSystem& owner) : owner_(owner) {}

  protected:
    FileVerdict judge(const FileRequest& request) override {
        switch (request.operation) {
            case FileOperation::open:
                return judgeOpen(request);
            case FileOperation::read:
                return owner_.readsFail() ? SQLITE_IOERR_READ : SQLITE_OK;
            case FileOperation::write:
                return owner_.writesFail() ? SQLITE_FULL : SQLITE_OK;
            case FileOperation::truncate:
                return owner_.writesFail() ? SQLITE_IOERR_TRUNCATE : SQLITE_OK;
            case FileOperation::sync:
                return owner_.writesFail() ? SQLITE_IOERR_FSYNC : SQLITE_OK;
            case FileOperation::remove:
                return owner_.writesFail() ? SQLITE_IOERR_DELETE : SQLITE_OK;
        }
        return SQLITE_OK;
    }

    void opened(FileKind kind, const std::string& path) override {
        if (kind != FileKind::database) return;
        const std::lock_guard lock(mutex_);
        ++open_[path];
    }
    void closed(FileKind kind, const std::string& path) override {
        if (kind != FileKind::database) return;
        const std::lock_guard lock(mutex_);
        if (--open_[path] == 0) open_.erase(path);
    }

  private:
    int judgeOpen(const FileRequest& request) {
        // A journal is made only to be written, and reading one that a crash left behind is a read.
        if (request.kind != FileKind::database)
            return request.creates && owner_.writesFail() ? SQLITE_CANTOPEN : SQLITE_OK;
        if (!owner_.openFails() && !owner_.readsFail() && !owner_.writesFail()) return SQLITE_OK;
        const std::lock_guard lock(mutex_);
        return open_.contains(request.path) ? SQLITE_OK : SQLITE_CANTOPEN;
    }

    FailingFileSystem& owner_;
    std::mutex mutex_;
    std::map<std::string, std::size_t, std::less<>> open_;
};

FailingFileSystem::FailingFileSystem() : shim_(std::make_unique<Shim>(*this)) {}
FailingFileSystem::~FailingFileSystem() = default;

const std::string& FailingFileSystem::name() const { return shim_->name(); }

void FailingFileSystem::keepInMemory(const std::string& folder) { shim_->keepInMemory(folder); }

}  // namespace orvane
