#pragma once

#include <memory>

#include "foundation/internal.h"
#include "platform/linux/application_directory.h"
#include "platform/linux/glib_run_loop.h"
#include "platform/linux/linux_file_manager.h"
#include "platform/linux/linux_host_application.h"
#include "platform/linux/linux_window_server.h"
#include "platform/linux/linux_workspace.h"
#include "platform/linux/main_loop_timer.h"
#include "platform/linux/random_uuid_source.h"
#include "platform/linux/settings_file.h"
#include "platform/linux/system_clock.h"
#include "platform/linux/system_log.h"
#include "platform/platform.h"

namespace orvane {

class AccessibilityBus;
class DesktopChoice;
class SessionMonitor;
class SharedBus;
class WaylandDisplay;

/// The running Linux desktop. Display and buses are looked for when the workspace, the windows or the session
/// are first asked for, so a program that only reads settings touches neither.
class LinuxPlatform : public Platform {
  public:
    LinuxPlatform();
    ~LinuxPlatform() override;

    LinuxWorkspace& workspace() override;
    LinuxWindowServer& windowServer() override;
    Accessibility& accessibility() override;
    HostApplication& hostApplication() override { return hostApplication_; }
    FileManager& fileManager() override { return fileManager_; }
    SettingsFile& userDefaults() override { return userDefaults_; }
    RunLoop& runLoop() override { return runLoop_; }
    Clock& clock() override { return clock_; }
    LogSink& logSink() override { return log_; }
    UuidSource& uuidSource() override { return uuidSource_; }
    std::vector<ServiceHealth> desktopHealth() override;

    // For diagnoses.

    DesktopChoice& desktop();
    SessionMonitor& session();

  private:
    void connect();
    // Each in order of preference.
    void addWindowBackends();
    void addIdleSources();
    void addScreenPowerSources();
    void healthMayHaveChanged();

    SystemLog log_;
    SystemClock clock_;
    RandomUuidSource uuidSource_;
    LinuxHostApplication hostApplication_{log_};
    LinuxFileManager fileManager_;
    SettingsFile userDefaults_{SettingsFile::defaultPath(), log_};
    GlibRunLoop runLoop_;
    ApplicationDirectory directory_;
#ifdef ORVANE_HAS_WAYLAND
    std::unique_ptr<WaylandDisplay> waylandDisplay_;  ///< outlives its listeners, all of them the desktop's
#endif
    /// The session's, for those who ask the desktop over it.
    std::unique_ptr<SharedBus> desktopBus_;
    std::unique_ptr<AccessibilityBus> accessibilityBus_;
    std::unique_ptr<Accessibility> accessibility_;
    std::unique_ptr<DesktopChoice> desktop_;
    LinuxWorkspace workspace_{directory_};
    LinuxWindowServer windowServer_{directory_};
    /// As it was told last, without what is seen.
    std::vector<ServiceHealth> toldHealth_;
    MainLoopTimer healthTimer_;
    /// Last, since its notices reach the others until it is gone. Set once all is connected.
    std::unique_ptr<SessionMonitor> session_;
};

}  // namespace orvane
