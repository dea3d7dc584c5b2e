#include "platform/linux/linux_workspace.h"

#include "platform/linux/icon_image.h"

namespace orvane {

LinuxWorkspace::LinuxWorkspace(ApplicationDirectory& directory) : directory_(directory) {}

LinuxWorkspace::~LinuxWorkspace() { detachBackend(); }

void LinuxWorkspace::detachBackend() {
    if (!backend_) return;
    backend_->onActiveWindowChanged = nullptr;
    backend_->onScreenSleepChanged = nullptr;
    backend_->onAvailabilityChanged = nullptr;
    backend_ = nullptr;
}

void LinuxWorkspace::setBackend(DesktopBackend* backend) {
    detachBackend();
    backend_ = backend;
    if (backend_) {
        backend_->onActiveWindowChanged = [this] { activeWindowChanged(); };
        backend_->onScreenSleepChanged = [this](bool asleep) { setDarkness(screensOff_, asleep); };
        backend_->onAvailabilityChanged = [this](bool available) {
            // What an old connection said of the screens holds no longer.
            if (available) screensOff_ = false;
            setDarkness(desktopGone_, !available);
        };
        // Whoever asks at the start sees what is in front by itself, so only changes from here on are told.
        announced_ = frontmostApplication();
    }
    const bool gone = backend_ && !backend_->isAvailable();
    if (!gone && desktopGone_) screensOff_ = false;
    setDarkness(desktopGone_, gone);
    setDarkness(screensOff_, false);
}

void LinuxWorkspace::setLocked(bool locked) { setDarkness(locked_, locked); }

void LinuxWorkspace::setDarkness(bool& reason, bool value) {
    if (reason == value) return;
    const bool wasDark = isDark();
    reason = value;
    if (isDark() == wasDark) return;
    announced_.reset();
    if (!wasDark) {
        notificationCenter_.post(NSWorkspaceScreensDidSleepNotification, this);
    } else {
        notificationCenter_.post(NSWorkspaceScreensDidWakeNotification, this);
        announceActivation();
    }
}

void LinuxWorkspace::setSystemSleeping(bool sleeping) {
    if (systemSleeping_ == sleeping) return;
    systemSleeping_ = sleeping;
    announced_.reset();
    if (sleeping) {
        notificationCenter_.post(NSWorkspaceWillSleepNotification, this);
    } else {
        notificationCenter_.post(NSWorkspaceDidWakeNotification, this);
        announceActivation();
    }
}

void LinuxWorkspace::activeWindowChanged() {
    if (onUserSeen && backend_->activeWindow()) onUserSeen();
    announceActivation();
}

void LinuxWorkspace::announceActivation() {
    if (isDark() || systemSleeping_) return;
    const auto front = frontmostApplication();
    // Between two applications there is often none for a moment; going back to the same one is no change.
    if (!front) return;
    if (announced_ && announced_->processIdentifier == front->processIdentifier &&
        announced_->bundleIdentifier == front->bundleIdentifier) {
        return;
    }
    announced_ = front;
    Dictionary details;
    details.set("NSApplicationBundleIdentifier", front->bundleIdentifier);
    details.set("NSApplicationProcessIdentifier", front->processIdentifier);
    notificationCenter_.post(NSWorkspaceDidActivateApplicationNotification, this, std::move(details));
}

std::optional<RunningApplication> LinuxWorkspace::frontmostApplication() {
    if (locked_) return RunningApplication{loginWindowIdentifier, 0};
    const auto window = backend_ ? backend_->activeWindow() : std::nullopt;
    if (!window) return std::nullopt;
    return RunningApplication{directory_.identify(*window), window->processIdentifier};
}

std::optional<std::filesystem::path> LinuxWorkspace::URLForApplicationWithBundleIdentifier(
    std::string_view identifier) {
    return directory_.entryPath(identifier);
}

std::optional<std::string> LinuxWorkspace::absolutePathForAppBundleWithIdentifier(
    std::string_view identifier) {
    const auto path = directory_.entryPath(identifier);
    return path ? std::optional(path->string()) : std::nullopt;
}

Image LinuxWorkspace::iconForFile(const std::filesystem::path& path) { return fileIcon(path); }

}  // namespace orvane
