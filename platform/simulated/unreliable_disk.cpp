#include "platform/simulated/unreliable_disk.h"

#include <stdexcept>
#include <utility>

#include "platform/simulated/file_system_shim.h"
#include "platform/simulated/unsynced_files.h"

namespace orvane {

class UnreliableDisk::Shim : public FileSystemShim {
  public:
    explicit Shim(const std::string& folder) { keepInMemory(folder); }

    void cutPower() {
        if (!hasPower) return;
        left_ = files.afterPowerCut(seed);
        hasPower = false;
    }
    void demandNoneOpen() const {
        if (open_ != 0) throw std::logic_error("a database is still open on the disk");
    }
    void restart(Files kept) {
        memory()->setFiles(kept);
        files.restart(std::move(kept));
        hasPower = true;
    }
    Files takeLeft() { return std::move(left_); }

    UnsyncedFiles files;
    std::uint64_t operations = 0;
    std::uint64_t seed = 0;
    std::uint64_t faultyOperation = 0;
    DiskFault fault = DiskFault::fails;
    std::function<void(const DiskOperation&)> observer;
    bool hasPower = true;

  protected:
    FileVerdict judge(const FileRequest& request) override {
        if (!hasPower) return codeFor(request.operation);
        if (request.operation == FileOperation::open) return SQLITE_OK;
        ++operations;
        const bool goesWrong = operations == faultyOperation;
        if (goesWrong && fault != DiskFault::powerCut) return fail(request);
        if (request.operation != FileOperation::sync) note(request, request.bytes);
        if (observer) observer({operations, request.operation, request.kind == FileKind::journal});
        if (goesWrong) {
            cutPower();
            return codeFor(request.operation);
        }
        if (request.operation == FileOperation::sync) note(request, {});
        return SQLITE_OK;
    }
    void opened(FileKind, const std::string& path) override {
        ++open_;
        files.opened(path);
    }
    void closed(FileKind, const std::string&) override { --open_; }
    /// A disk that may lose or reorder what was written promises no more than the usual one: that writing
    /// some bytes leaves their neighbours alone.
    int characteristics(int below) const override { return below & SQLITE_IOCAP_POWERSAFE_OVERWRITE; }

  private:
    static int codeFor(FileOperation operation) {
        switch (operation) {
            case FileOperation::open:
                return SQLITE_CANTOPEN;
            case FileOperation::read:
                return SQLITE_IOERR_READ;
            case FileOperation::write:
                return SQLITE_IOERR_WRITE;
            case FileOperation::truncate:
                return SQLITE_IOERR_TRUNCATE;
            case FileOperation::sync:
                return SQLITE_IOERR_FSYNC;
            case FileOperation::remove:
                return SQLITE_IOERR_DELETE;
        }
        return SQLITE_IOERR;
    }

    FileVerdict fail(const FileRequest& request) {
        const std::size_t done = fault == DiskFault::cutShort ? request.size / 2 : 0;
        if (done > 0 && request.operation == FileOperation::write) note(request, request.bytes.first(done));
        return {codeFor(request.operation), done};
    }

    void note(const FileRequest& request, std::span<const std::uint8_t> bytes) {
        switch (request.operation) {
            case FileOperation::write:
                files.written(request.path, request.offset, {bytes.begin(), bytes.end()});
                break;
            case FileOperation::truncate:
                files.truncated(request.path, request.offset);
                break;
            case FileOperation::sync:
                // The first sync of a journal brings its folder to the disk too; so do later ones here, since
                // nothing is made or removed between the two.
                files.synced(request.path, request.kind == FileKind::journal);
                break;
            case FileOperation::remove:
                files.removed(request.path, request.syncsFolder);
                break;
            case FileOperation::open:
            case FileOperation::read:
                break;
        }
    }

    Files left_;
    int open_ = 0;
};

UnreliableDisk::UnreliableDisk(const std::string& folder) : shim_(std::make_unique<Shim>(folder)) {}
UnreliableDisk::~UnreliableDisk() = default;

const std::string& UnreliableDisk::name() const { return shim_->name(); }

std::uint64_t UnreliableDisk::operations() const { return shim_->operations; }

void UnreliableDisk::failAt(std::uint64_t operation, DiskFault fault) {
    shim_->faultyOperation = operation;
    shim_->fault = fault;
}

void UnreliableDisk::setObserver(std::function<void(const DiskOperation&)> observer) {
    shim_->observer = std::move(observer);
}

UnreliableDisk::Files UnreliableDisk::afterPowerCut(std::uint64_t seed) const {
    return shim_->files.afterPowerCut(seed);
}

void UnreliableDisk::cutPower() { shim_->cutPower(); }

void UnreliableDisk::setSeed(std::uint64_t seed) { shim_->seed = seed; }

bool UnreliableDisk::hasPower() const { return shim_->hasPower; }

void UnreliableDisk::powerOn() {
    if (hasPower()) return;
    shim_->demandNoneOpen();
    shim_->restart(shim_->takeLeft());
}

void UnreliableDisk::setFiles(Files files) {
    shim_->demandNoneOpen();
    shim_->restart(std::move(files));
}

}  // namespace orvane
