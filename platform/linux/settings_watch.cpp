#include "platform/linux/settings_watch.h"

#include <glib-unix.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

namespace orvane {

namespace {

constexpr std::uint32_t watchedEvents = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_CREATE |
                                        IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
constexpr std::uint32_t lossEvents = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;

/// A new file that somebody still writes is told again when it is closed; a new link is not.
bool isFinished(const std::filesystem::path& file) {
    struct stat status {};
    return lstat(file.c_str(), &status) == 0 && (S_ISLNK(status.st_mode) || status.st_nlink > 1);
}

}  // namespace

SettingsWatch::SettingsWatch(std::vector<std::filesystem::path> folders, Handler handler)
    : folders_(std::move(folders)),
      handler_(std::move(handler)),
      descriptor_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (descriptor_ < 0) return;
    for (const auto& folder : folders_) {
        const int number = inotify_add_watch(descriptor_, folder.c_str(), watchedEvents);
        if (number >= 0) watched_[number] = folder;
    }
    const auto ready = +[](gint, GIOCondition, gpointer self) -> gboolean {
        static_cast<SettingsWatch*>(self)->readEvents();
        return G_SOURCE_CONTINUE;
    };
    source_ = g_unix_fd_add(descriptor_, G_IO_IN, ready, this);
}

SettingsWatch::~SettingsWatch() {
    if (source_ != 0) g_source_remove(source_);
    if (descriptor_ >= 0) close(descriptor_);
}

void SettingsWatch::readEvents() {
    bool lost = false;
    bool changed = false;
    alignas(inotify_event) char buffer[4096];
    for (ssize_t size = 0; (size = read(descriptor_, buffer, sizeof buffer)) > 0;) {
        for (const char* at = buffer; at < buffer + size;) {
            inotify_event event{};
            std::memcpy(&event, at, sizeof event);
            const char* name = at + sizeof event;
            at = name + event.len;
            if ((event.mask & lossEvents) != 0) {
                lost = true;
            } else if ((event.mask & IN_CREATE) != 0) {
                const auto folder = watched_.find(event.wd);
                changed |= event.len > 0 && folder != watched_.end() && isFinished(folder->second / name);
            } else {
                changed = true;
            }
        }
    }
    if (!lost && !changed) return;
    // The handler may destroy this object and itself with it.
    const Handler handler = handler_;
    handler(lost);
}

}  // namespace orvane
