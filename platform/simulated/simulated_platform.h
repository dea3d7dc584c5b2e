#pragma once

#include "platform/platform.h"
#include "platform/simulated/repeatable_uuid_source.h"
#include "platform/simulated/simulated_accessibility.h"
#include "platform/simulated/simulated_file_manager.h"
#include "platform/simulated/simulated_host.h"
#include "platform/simulated/simulated_user_defaults.h"
#include "platform/simulated/simulated_window_server.h"
#include "platform/simulated/simulated_workspace.h"
#include "platform/simulated/virtual_clock.h"
#include "platform/simulated/virtual_run_loop.h"

namespace orvane {

/// A desktop that does what it is told, on a clock that stands still until it is moved. Each service is
/// answered with its simulated type, so that whoever holds this platform can steer it. At first there is no
/// frontmost application, no window, no accessibility, no installed application, no folder for application
/// data, and the time is 1970-01-01T00:00:00Z.
class ORVANE_EXPORT SimulatedPlatform : public Platform {
  public:
    SimulatedPlatform();
    ~SimulatedPlatform() override;

    SimulatedWorkspace& workspace() override { return workspace_; }
    SimulatedWindowServer& windowServer() override { return windowServer_; }
    SimulatedAccessibility& accessibility() override { return accessibility_; }
    SimulatedHostApplication& hostApplication() override { return hostApplication_; }
    SimulatedFileManager& fileManager() override { return fileManager_; }
    SimulatedUserDefaults& userDefaults() override { return userDefaults_; }
    VirtualRunLoop& runLoop() override { return runLoop_; }
    VirtualClock& clock() override { return clock_; }
    SimulatedLogSink& logSink() override { return logSink_; }
    RepeatableUuidSource& uuidSource() override { return uuidSource_; }
    /// The services of the script, which never fail.
    std::vector<ServiceHealth> desktopHealth() override;

  private:
    VirtualClock clock_;
    VirtualRunLoop runLoop_;
    SimulatedWorkspace workspace_;
    SimulatedWindowServer windowServer_;
    SimulatedAccessibility accessibility_;
    SimulatedHostApplication hostApplication_;
    SimulatedFileManager fileManager_;
    SimulatedUserDefaults userDefaults_;
    SimulatedLogSink logSink_;
    RepeatableUuidSource uuidSource_;
};

}  // namespace orvane
