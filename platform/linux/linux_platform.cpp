#include "platform/linux/linux_platform.h"

#include "platform/linux/desktop_choice.h"
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
    desktop_ = std::make_unique<DesktopChoice>();
    addWindowBackends();
    addIdleSources();
    addScreenPowerSources();
    desktop_->start();
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

void LinuxPlatform::addWindowBackends() {
#ifdef ORVANE_HAS_X11
    desktop_->addForNoCompositor([] { return std::make_unique<X11Backend>(); });
#endif
}

void LinuxPlatform::addIdleSources() {}

void LinuxPlatform::addScreenPowerSources() {}

LinuxWorkspace& LinuxPlatform::workspace() {
    connect();
    return workspace_;
}

LinuxWindowServer& LinuxPlatform::windowServer() {
    connect();
    return windowServer_;
}

DesktopChoice& LinuxPlatform::desktop() {
    connect();
    return *desktop_;
}

SessionMonitor& LinuxPlatform::session() {
    connect();
    return *session_;
}

std::shared_ptr<Platform> makeLinuxPlatform() { return std::make_shared<LinuxPlatform>(); }

}  // namespace orvane
