#include "host/tracker_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "foundation/error.h"
#include "platform/platform.h"

namespace orvane::host {

TrackerLock::TrackerLock(const std::filesystem::path& folder) {
    Error error;
    if (Platform::current().fileManager().isDirectory(folder, &error) == false) {
        problem_ = "\"" + folder.string() + "\" is a file, not a folder.";
        return;
    }
    if (!Platform::current().fileManager().createDirectory(folder, &error)) {
        problem_ = error.localizedDescription();
        return;
    }
    const std::filesystem::path file = folder / "tracker.lock";
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        problem_ = "The folder \"" + folder.string() + "\" cannot be written: " + std::strerror(errno) + ".";
        return;
    }
    ::fchmod(descriptor, 0600);  // whatever the umask, or an earlier version, made of it
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        ::close(descriptor);
        problem_ = "Another tracker, or an import, is writing to \"" + folder.string() +
                   "\". End it first, or choose another folder with --store.";
        return;
    }
    descriptor_ = descriptor;
}

TrackerLock::~TrackerLock() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

}  // namespace orvane::host
