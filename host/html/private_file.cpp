#include "host/html/private_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace orvane::host {

namespace {

/// Writes all of the content and has it reach the disk; 0, or the error's number.
int writeAll(int file, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = ::write(file, content.data(), content.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return errno;
        content.remove_prefix(static_cast<std::size_t>(written));
    }
    return ::fsync(file) == 0 ? 0 : errno;
}

}  // namespace

std::string writePrivateFile(const std::filesystem::path& path, std::string_view content) {
    // Beside the file, so that renaming does not leave its file system. mkstemp makes it with mode 0600.
    std::string temporary = path.string() + ".XXXXXX";
    int failure = 0;
    const int file = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (file < 0) {
        failure = errno;
    } else {
        failure = writeAll(file, content);
        if (::close(file) != 0 && failure == 0) failure = errno;
        if (failure == 0 && ::rename(temporary.c_str(), path.c_str()) != 0) failure = errno;
        if (failure != 0) ::unlink(temporary.c_str());
    }
    return failure == 0
               ? std::string()
               : "Cannot write \"" + path.string() + "\": " + std::generic_category().message(failure) + ".";
}

}  // namespace orvane::host
