#include "tests/tracker/tracked_desk.h"

namespace orvane::test {

TrackedDesk::TrackedDesk() {
    desktop_->fileManager().setResourceDirectory(ORVANE_SOURCE_DIR "/store");
    desktop_->logSink().setHandler([this](std::string_view line) { (log_ += line) += '\n'; });
    desktop_->userDefaults().setObject(true, orvaneEnabledDefault);
    desktop_->userDefaults().setObject(true, orvaneLoggingDefault);
    Platform::install(desktop_);
}

TrackedDesk::~TrackedDesk() {
    Orvane::resetShared();
    Platform::install(nullptr);
}

void TrackedDesk::show(const std::string& application, const std::string& title) {
    desktop_->workspace().setFrontmostApplication(RunningApplication{application, 7});
    Dictionary window;
    window.set(kCGWindowOwnerPID, 7);
    window.set(kCGWindowLayer, 0);
    window.set(kCGWindowName, title);
    window.set(kCGWindowOwnerName, application);
    desktop_->windowServer().setWindows({window});
}

void TrackedDesk::pass(int seconds) {
    desktop_->runLoop().advanceTo(desktop_->clock().time() + std::chrono::seconds(seconds));
}

std::string TrackedDesk::recordings() const {
    return runSQL(folder_ / "Orvaning.db",
                  "SELECT a.identifier || ' ' || coalesce(r.windowName, 'none') || ' ' || "
                  "CAST(r.endDate - r.startDate AS INTEGER) FROM Recording r "
                  "JOIN Application a ON a._id = r.application ORDER BY r.startDate, r._id");
}

}  // namespace orvane::test
