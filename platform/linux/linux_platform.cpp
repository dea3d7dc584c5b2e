#include "platform/linux/linux_platform.h"

#include "platform/linux/session/session_monitor.h"
#ifdef ORVANE_HAS_X11
#include "platform/linux/x11/x11_backend.h"
#endif

namespace orvane {

LinuxPlatform::LinuxPlatform() = default;

LinuxPlatform::~LinuxPlatform() = default;

void LinuxPlatform::connect() {
    if (session_) return;
    session_ = std::make_unique<SessionMonitor>();
#ifdef ORVANE_HAS_X11
    desktop_ = std::make_unique<X11Backend>();
#endif
    workspace_.setBackend(desktop_.get());
    windowServer_.setBackend(desktop_.get());
    workspace_.onUserSeen = [this] { session_->userIsBack(); };

    session_->onSleep = [this](bool asleep) { workspace_.setSystemSleeping(asleep); };
    session_->onLock = [this](bool locked) { workspace_.setLocked(locked); };
    session_->onEnd = [this] {
        defaultNotificationCenter().post(NSApplicationWillTerminateNotification, &hostApplication_);
    };
    session_->start();
}

LinuxWorkspace& LinuxPlatform::workspace() {
    connect();
    return workspace_;
}

LinuxWindowServer& LinuxPlatform::windowServer() {
    connect();
    return windowServer_;
}

DesktopBackend* LinuxPlatform::desktop() {
    connect();
    return desktop_.get();
}

SessionMonitor& LinuxPlatform::session() {
    connect();
    return *session_;
}

std::shared_ptr<Platform> makeLinuxPlatform() { return std::make_shared<LinuxPlatform>(); }

}  // namespace orvane
