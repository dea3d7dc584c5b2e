#include "persistence/sqlite/private_copy.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "foundation/file_descriptor.h"
#include "persistence/persistence_errors.h"
#include "persistence/sqlite/database.h"

namespace orvane::sqlite {

namespace {

// The bytes that SQLite's readers and writers lock: https://www.sqlite.org/src/file/src/os.h
constexpr off_t pendingByte = 0x40000000;
constexpr off_t sharedFirst = pendingByte + 2;
constexpr off_t sharedSize = 510;

constexpr int lockAttempts = 1000;
constexpr useconds_t lockPause = 5000;  // microseconds

bool fail(Error* error, PersistenceErrorCode code, const std::filesystem::path& file,
          const std::string& what) {
    assignError(error, Error(persistenceErrorDomain, code, "The file \"" + file.string() + "\" " + what));
    return false;
}

bool failBySystem(Error* error, const std::filesystem::path& file, const char* what, int number) {
    const auto code = number == ENOSPC || number == EDQUOT ? storeFullError
                      : number == EIO                      ? storeInputOutputError
                                                           : storeCannotOpenError;
    return fail(error, code, file, std::string(what) + ": " + std::strerror(number) + ".");
}

/// A lock of the open file, which other connections of this process do not share.
bool setLock(int descriptor, short type, off_t start, off_t size) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = size;
    return ::fcntl(descriptor, F_OFD_SETLK, &lock) == 0;
}

/// Keeps writers from changing the file until the descriptor is closed. True too where there are no locks.
bool lockForReading(int descriptor) {
    for (int i = 0; i < lockAttempts; ++i) {
        if (setLock(descriptor, F_RDLCK, pendingByte, 1)) {
            const bool held = setLock(descriptor, F_RDLCK, sharedFirst, sharedSize);
            setLock(descriptor, F_UNLCK, pendingByte, 1);
            if (held) return true;
        }
        if (errno != EAGAIN && errno != EACCES) return true;
        ::usleep(lockPause);
    }
    return false;
}

/// Copies up to the end of the file. Zero, or the system's error in writing.
int copyBytes(int from, int to, off_t size, std::uint64_t& unreadable) {
    constexpr std::size_t block = 4096;
    std::vector<char> buffer(block * 64);
    std::size_t step = buffer.size();
    for (off_t done = 0; done < size;) {
        const auto wanted = std::min(static_cast<std::size_t>(size - done), step);
        ssize_t count = ::pread(from, buffer.data(), wanted, done);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && wanted > block) {
            step = block;
            continue;
        }
        if (count == 0) break;
        if (count < 0) {
            count = static_cast<ssize_t>(wanted);
            std::fill_n(buffer.begin(), wanted, '\0');
            unreadable += wanted;
        }
        for (ssize_t written = 0; written < count;) {
            const ssize_t now = ::pwrite(to, buffer.data() + written,
                                         static_cast<std::size_t>(count - written), done + written);
            if (now < 0 && errno != EINTR) return errno;
            written += std::max<ssize_t>(now, 0);
        }
        done += count;
    }
    return 0;
}

bool copyFile(const FileDescriptor& from, const std::filesystem::path& source,
              const std::filesystem::path& target, std::uint64_t& unreadable, Error* error) {
    struct stat status {};
    if (::fstat(from.number(), &status) != 0) return failBySystem(error, source, "cannot be read", errno);
    const FileDescriptor to(::open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (to.number() < 0) return failBySystem(error, target, "cannot be made", errno);
    ::fchmod(to.number(), 0600);
    const int failure = copyBytes(from.number(), to.number(), status.st_size, unreadable);
    return failure == 0 || failBySystem(error, target, "cannot be written", failure);
}

/// Lets SQLite put back what a journal beside the copy holds, or take a log in. Where it cannot, the copy
/// stays as it is.
void settle(const std::filesystem::path& copy) {
    const auto database = Database::open(copy, {}, nullptr);
    if (!database) return;
    sqlite3_db_config(database->handle(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    database->singleValue("SELECT count(*) FROM \"sqlite_schema\"", nullptr);
    database->singleValue("PRAGMA wal_checkpoint(TRUNCATE)", nullptr);
}

}  // namespace

std::optional<PrivateCopy> PrivateCopy::make(const std::filesystem::path& file,
                                             const std::filesystem::path& parent, Error* error) {
    const auto refuse = [](bool) { return std::nullopt; };
    const FileDescriptor from(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (from.number() < 0 || ::fstat(from.number(), &status) != 0)
        return refuse(failBySystem(error, file, "cannot be read", errno));
    if (!S_ISREG(status.st_mode)) return refuse(fail(error, storeCannotOpenError, file, "is no plain file."));
    if (!lockForReading(from.number()))
        return refuse(
            fail(error, storeLockedError, file, "is being written by another program. Try again later."));

    std::string pattern = (parent / ".orvane-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) return refuse(failBySystem(error, parent, "cannot be written", errno));
    ::chmod(pattern.c_str(), 0700);
    PrivateCopy copy{std::filesystem::path(pattern)};
    if (!copyFile(from, file, copy.file(), copy.unreadableBytes_, error)) return std::nullopt;
    for (const char* suffix : {"-journal", "-wal"}) {
        const std::filesystem::path beside = file.string() + suffix;
        const FileDescriptor source(::open(beside.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        if (source.number() < 0) continue;
        std::uint64_t ignored = 0;
        if (!copyFile(source, beside, copy.file().string() + suffix, ignored, error)) return std::nullopt;
    }
    settle(copy.file());
    return copy;
}

PrivateCopy::PrivateCopy(PrivateCopy&& other) noexcept
    : folder_(std::exchange(other.folder_, {})), unreadableBytes_(other.unreadableBytes_) {}

PrivateCopy& PrivateCopy::operator=(PrivateCopy&& other) noexcept {
    std::swap(folder_, other.folder_);
    std::swap(unreadableBytes_, other.unreadableBytes_);
    return *this;
}

PrivateCopy::~PrivateCopy() {
    std::error_code ignored;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
}

bool isStorableText(std::string_view text) {
    return g_utf8_validate_len(text.data(), text.size(), nullptr) == TRUE;
}

}  // namespace orvane::sqlite
