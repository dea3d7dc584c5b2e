#include "platform/linux/desktop_diagnosis.h"

#include <gtest/gtest.h>

#include "platform/linux/application_directory.h"
#include "platform/linux/desktop_choice.h"
#include "platform/linux/linux_workspace.h"
#include "platform/linux/session/session_monitor.h"

namespace orvane::testing {
namespace {

class Backend : public DesktopBackend {
  public:
    std::string name() const override { return "desktop"; }
    bool isAvailable() const override { return available; }
    bool isDecided() const override { return decided; }
    std::optional<DesktopWindow> activeWindow() override {
        return DesktopWindow{1, 0, 0, "Secret plans", "planner", {}, {}};
    }
    std::vector<DesktopWindow> windows() override { return {*activeWindow()}; }
    std::optional<double> idleSeconds() override { return 1.5; }

    bool available = true;
    bool decided = true;
};

class DesktopDiagnosisTest : public ::testing::Test {
  protected:
    DesktopDiagnosisTest() {
        choice_.add(std::unique_ptr<DesktopBackend>(backend_));
        choice_.start();
        workspace_.setBackend(&choice_);
    }
    ~DesktopDiagnosisTest() override { workspace_.setBackend(nullptr); }

    ServiceHealth health(const std::string& service) {
        for (auto& each : diagnoseDesktop(choice_, workspace_, session_)) {
            if (each.service == service) return each;
        }
        return {};
    }

    Backend* backend_ = new Backend;
    DesktopChoice choice_;
    ApplicationDirectory directory_;
    LinuxWorkspace workspace_{directory_};
    SessionMonitor session_{"", ""};
};

TEST_F(DesktopDiagnosisTest, TellsWhatIsInFrontAndNothingFromBehindALock) {
    EXPECT_EQ(health("windows").sees, "1 on screen, in front planner: Secret plans");
    EXPECT_EQ(health("idle time").sees, "last input 1 s ago");
    workspace_.setLocked(true);
    EXPECT_EQ(health("windows").sees, std::string("1 on screen, in front ") + loginWindowIdentifier);
}

TEST_F(DesktopDiagnosisTest, ADesktopThatIsSlowIsNotTakenForOneThatIsMissing) {
    backend_->available = backend_->decided = false;
    backend_->onAvailabilityChanged(false);
    const std::string notYet = health("windows").problem;
    EXPECT_NE(notYet.find("not answered yet"), std::string::npos) << notYet;
    backend_->decided = true;
    EXPECT_NE(health("windows").problem, notYet);
    EXPECT_NE(health("windows").problem, "");
}

}  // namespace
}  // namespace orvane::testing
