#pragma once

#include <functional>

#include "foundation/internal.h"
#include "platform/linux/application_directory.h"
#include "platform/linux/desktop_backend.h"
#include "platform/workspace.h"

namespace orvane {

/// Applications of the running desktop. Main thread only.
///
/// Screens that are off, a locked session and a desktop that went away are all told as screen sleep: once
/// when the first of them begins and, as waking, when the last one ends. While one lasts no activation is
/// announced. After it, and after system sleep, the next application that is in front is announced even when
/// it is the same one.
class LinuxWorkspace : public Workspace {
  public:
    explicit LinuxWorkspace(ApplicationDirectory& directory);
    ~LinuxWorkspace() override;
    LinuxWorkspace(const LinuxWorkspace&) = delete;
    LinuxWorkspace& operator=(const LinuxWorkspace&) = delete;

    /// The desktop to ask from now on; none when there is none. It must outlive its use here.
    void setBackend(DesktopBackend* backend);

    /// Called when a window becomes the active one, before that is announced: somebody is at work.
    std::function<void()> onUserSeen;

    // Told by the session.

    /// The session was locked or unlocked. A locked one has the login window in front.
    void setLocked(bool locked);
    /// The machine is about to sleep, or has woken up.
    void setSystemSleeping(bool sleeping);

    std::optional<RunningApplication> frontmostApplication() override;
    std::optional<std::filesystem::path> URLForApplicationWithBundleIdentifier(
        std::string_view identifier) override;
    std::optional<std::string> absolutePathForAppBundleWithIdentifier(std::string_view identifier) override;
    Image iconForFile(const std::filesystem::path& path) override;
    NotificationCenter& notificationCenter() override { return notificationCenter_; }

  private:
    bool isDark() const { return screensOff_ || locked_ || desktopGone_; }
    void setDarkness(bool& reason, bool value);
    void activeWindowChanged();
    void announceActivation();
    void detachBackend();

    ApplicationDirectory& directory_;
    DesktopBackend* backend_ = nullptr;
    NotificationCenter notificationCenter_;
    bool screensOff_ = false;
    bool locked_ = false;
    bool desktopGone_ = false;
    bool systemSleeping_ = false;
    /// The application announced last; none when the next one is to be announced whichever it is.
    std::optional<RunningApplication> announced_;
};

}  // namespace orvane
