#include "host/output_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace orvane::host {

namespace {

constexpr std::size_t bufferSize = 1 << 16;

}  // namespace

OutputFile::OutputFile(std::optional<std::filesystem::path> file, bool overwrite)
    : file_(std::move(file)), overwrite_(overwrite) {
    if (!file_) {
        descriptor_ = STDOUT_FILENO;
        return;
    }
    // Behind a link lies the file that is meant.
    std::error_code ignored;
    if (const auto target = std::filesystem::canonical(*file_, ignored); !ignored) file_ = target;
    struct stat existing {};
    if (::stat(file_->c_str(), &existing) == 0) {
        if (!S_ISREG(existing.st_mode)) {
            problem_ = shownName() + " is no regular file.";
            return;
        }
        if (!overwrite_) {
            problem_ = shownName() + " exists already. Name another file, or overwrite it with --force.";
            return;
        }
    }
    temporary_ = (file_->parent_path() / (".orvane-" + file_->filename().string() + "-XXXXXX")).string();
    descriptor_ = ::mkostemp(temporary_.data(), O_CLOEXEC);  // with mode 0600
    if (descriptor_ >= 0) {
        ::fchmod(descriptor_, 0600);  // a umask may have taken rights from us
        return;
    }
    temporary_.clear();
    fail("cannot be written");
}

OutputFile::~OutputFile() {
    if (file_ && descriptor_ >= 0) ::close(descriptor_);
    if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

void OutputFile::write(std::string_view text) {
    if (!problem_.empty()) return;
    buffer_ += text;
    if (buffer_.size() >= bufferSize) flush();
}

bool OutputFile::finish() {
    flush();
    if (!problem_.empty()) return false;
    if (!file_) return true;
    if (::fsync(descriptor_) != 0) {
        fail("cannot be written");
        return false;
    }
    return takeName();
}

bool OutputFile::takeName() {
    // Without --force a file that appeared meanwhile stays. File systems that cannot promise that were asked
    // at the beginning.
    int result = ::renameat2(AT_FDCWD, temporary_.c_str(), AT_FDCWD, file_->c_str(),
                             overwrite_ ? 0 : RENAME_NOREPLACE);
    if (result != 0 && (errno == EINVAL || errno == ENOSYS))
        result = ::rename(temporary_.c_str(), file_->c_str());
    if (result != 0) {
        fail("cannot be written");
        return false;
    }
    temporary_.clear();
    return true;
}

void OutputFile::flush() {
    std::string_view rest = buffer_;
    while (problem_.empty() && !rest.empty()) {
        const ssize_t written = ::write(descriptor_, rest.data(), rest.size());
        if (written >= 0)
            rest.remove_prefix(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            fail("cannot be written");
    }
    buffer_.clear();
}

void OutputFile::fail(const std::string& what) {
    problem_ = shownName() + " " + what + ": " + std::strerror(errno) + ".";
}

std::string OutputFile::shownName() const {
    return file_ ? "The file \"" + file_->string() + "\"" : "Standard output";
}

}  // namespace orvane::host
