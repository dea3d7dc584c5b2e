#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/linux_platform.h"
#include "platform/simulated/simulated_host.h"
#include "platform/simulated/simulated_user_defaults.h"
#include "platform/simulated/virtual_clock.h"
#include "platform/simulated/virtual_run_loop.h"
#include "tests/desktops/desktop_kinds.h"

namespace orvane {

/// The real desktop on a clock of its own, so that what is recorded does not depend on how fast the machine
/// is. Settings are kept in memory.
class VirtualTimePlatform : public Platform {
  public:
    explicit VirtualTimePlatform(LinuxPlatform& desktop);

    Workspace& workspace() override { return desktop_.workspace(); }
    WindowServer& windowServer() override { return windowServer_; }
    Accessibility& accessibility() override { return desktop_.accessibility(); }
    SimulatedHostApplication& hostApplication() override { return hostApplication_; }
    FileManager& fileManager() override { return desktop_.fileManager(); }
    SimulatedUserDefaults& userDefaults() override { return userDefaults_; }
    VirtualRunLoop& runLoop() override { return runLoop_; }
    VirtualClock& clock() override { return clock_; }
    SimulatedLogSink& logSink() override { return logSink_; }
    UuidSource& uuidSource() override { return desktop_.uuidSource(); }

    /// How many seconds without input each real one counts as; none do at first.
    void setIdleFactor(double factor) { windowServer_.idleFactor = factor; }

  private:
    struct IdleScale : WindowServer {
        explicit IdleScale(LinuxPlatform& platform) : desktop(platform) {}
        std::vector<WindowIdentifier> windowListCreate(std::uint32_t options,
                                                       WindowIdentifier reference) override;
        std::vector<Dictionary> windowListCreateDescriptionFromArray(
            std::span<const WindowIdentifier> windows) override;
        double secondsSinceLastEventType(std::int32_t state, std::uint32_t eventType) override;

        LinuxPlatform& desktop;
        double idleFactor = 0;
    };

    LinuxPlatform& desktop_;
    IdleScale windowServer_{desktop_};
    SimulatedHostApplication hostApplication_;
    SimulatedUserDefaults userDefaults_;
    SimulatedLogSink logSink_;
    VirtualClock clock_;
    VirtualRunLoop runLoop_{clock_};
};

/// A desktop that was started, and the platform that has found it.
class TrackedDesktop : public ::testing::TestWithParam<DesktopKind> {
  protected:
    void SetUp() override;
    void TearDown() override;

    TestDesktop& desktop() { return *desktop_; }
    LinuxPlatform& platform() { return *platform_; }

    /// The window in front as "identifier: title"; "none" when there is none.
    std::string front();
    /// The same of all windows, front to back.
    std::vector<std::string> windows();
    double idle();
    /// Opens a window and waits until it is in front.
    TestDesktop::Window& openInFront(const std::string& program, const std::string& title);

    /// Waits, running the main loop, until `read` gives what is expected.
    template <typename Value>
    ::testing::AssertionResult becomes(const std::function<Value()>& read, const Value& expected);
    ::testing::AssertionResult frontBecomes(const std::string& expected);
    ::testing::AssertionResult windowsBecome(const std::vector<std::string>& expected);
    /// No window is told any more, where put-aside ones are not.
    ::testing::AssertionResult windowsVanish();
    /// What the workspace has told: "dark", "light", "sleep", "wake" and identifiers of applications.
    ::testing::AssertionResult told(const std::vector<std::string>& expected);

  private:
    std::unique_ptr<TestDesktop> desktop_;
    std::unique_ptr<LinuxPlatform> platform_;
    std::vector<std::string> told_;
};

}  // namespace orvane
