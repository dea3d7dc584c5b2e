#include "platform/linux/session/session_monitor.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>

#include "tests/platform/main_loop_wait.h"
#include "tests/platform/session/session_mocks.h"

namespace orvane {
namespace {

using Texts = std::vector<std::string>;

class SessionMonitorTest : public testing::Test {
  protected:
    SessionMonitorTest() { unsetenv("XDG_SESSION_ID"); }

    void startMonitor() {
        monitor_ = std::make_unique<SessionMonitor>(systemBus_.address(), sessionBus_.address());
        monitor_->onSleep = [this](bool asleep) {
            notices_.push_back(asleep ? "sleep" : "wake");
            if (login_ && asleep) heldDuringSleepNotice_ = login_->inhibitors();
        };
        monitor_->onLock = [this](bool locked) { notices_.push_back(locked ? "lock" : "unlock"); };
        monitor_->onEnd = [this] { notices_.push_back("end"); };
        monitor_->start();
        EXPECT_TRUE(waitUntil([this] { return monitor_->isDecided(); }));
    }
    void startLogin() { login_ = std::make_unique<MockLoginManager>(systemBus_); }
    testing::AssertionResult told(const Texts& expected) {
        if (waitUntil([&] { return notices_.size() >= expected.size(); }, 5) && notices_ == expected) {
            notices_.clear();
            return testing::AssertionSuccess();
        }
        return testing::AssertionFailure() << "was told " << testing::PrintToString(notices_);
    }
    bool isAvailable(const std::string& name) {
        const auto all = monitor_->status();
        return std::any_of(all.begin(), all.end(),
                           [&](auto& service) { return service.name == name && service.isAvailable; });
    }
    SessionService service(const std::string& name) {
        for (const auto& service : monitor_->status()) {
            if (service.name == name) return service;
        }
        return {};
    }
    std::string detail(const std::string& name) { return service(name).detail; }

    PrivateBus systemBus_;
    PrivateBus sessionBus_;
    std::unique_ptr<MockLoginManager> login_;
    std::unique_ptr<SessionMonitor> monitor_;
    Texts notices_;
    Texts heldDuringSleepNotice_;
};

TEST_F(SessionMonitorTest, SleepWaitsUntilTheNoticeWasHandled) {
    systemBus_.start();
    startLogin();
    startMonitor();
    EXPECT_EQ(login_->inhibitors(), Texts{"sleep delay"});
    for (int round = 0; round < 2; ++round) {
        heldDuringSleepNotice_.clear();
        login_->prepareFor("Sleep", true);
        EXPECT_TRUE(told({"sleep"}));
        EXPECT_EQ(heldDuringSleepNotice_, Texts{"sleep delay"});
        EXPECT_TRUE(waitUntil([&] { return login_->inhibitors().empty(); }));
        login_->prepareFor("Sleep", false);
        EXPECT_TRUE(told({"wake"}));
        EXPECT_TRUE(waitUntil([&] { return login_->inhibitors() == Texts{"sleep delay"}; }));
    }
    login_->prepareFor("Shutdown", false);
    login_->prepareFor("Shutdown", true);
    EXPECT_TRUE(told({"end"}));
    monitor_.reset();
    EXPECT_TRUE(waitUntil([&] { return login_->inhibitors().empty(); }));
}

TEST_F(SessionMonitorTest, LocksOfTheUsersSession) {
    systemBus_.start();
    startLogin();
    startMonitor();
    login_->addSession("other", getuid() + 1);
    login_->addSession("own", getuid());
    ASSERT_TRUE(waitUntil([&] { return detail("login manager").ends_with("/own"); }));

    login_->hintLocked("own", true);
    EXPECT_TRUE(told({"lock"}));
    monitor_->userIsBack();
    EXPECT_TRUE(monitor_->isLocked());
    login_->hintLocked("own", false);
    EXPECT_TRUE(told({"unlock"}));
    login_->lock("other");
    login_->lock("own");
    EXPECT_TRUE(told({"lock"}));
    login_->unlock("own");
    EXPECT_TRUE(told({"unlock"}));

    // The hint taken back also answers the request, however short it stood.
    login_->lock("own");
    login_->hintLocked("own", true);
    login_->hintLocked("own", false);
    EXPECT_TRUE(told({"lock", "unlock"}));
    // A request that nobody confirms is over when the user works on.
    login_->lock("own");
    EXPECT_TRUE(told({"lock"}));
    monitor_->userIsBack();
    EXPECT_TRUE(told({"unlock"}));

    login_->hintLocked("own", true);
    EXPECT_TRUE(told({"lock"}));
    login_->removeSession("own");
    EXPECT_TRUE(told({"unlock"}));
}

TEST_F(SessionMonitorTest, TheEndOfTheProcessesOwnSessionIsALogout) {
    setenv("XDG_SESSION_ID", "own", 1);
    systemBus_.start();
    startLogin();
    login_->addSession("own", getuid());
    login_->addSession("second", getuid());
    startMonitor();
    EXPECT_TRUE(detail("login manager").ends_with("/own"));
    login_->removeSession("second");
    login_->lock("own");
    EXPECT_TRUE(told({"lock"}));
    login_->removeSession("own");
    EXPECT_TRUE(told({"end", "unlock"}));
}

TEST_F(SessionMonitorTest, ScreenSavers) {
    systemBus_.start();
    sessionBus_.start();
    startLogin();
    login_->addSession("own", getuid());
    auto gnome = std::make_unique<MockScreenSaver>(sessionBus_, "org.gnome.ScreenSaver",
                                                   "/org/gnome/ScreenSaver", true);
    startMonitor();
    EXPECT_TRUE(told({"lock"}));
    EXPECT_EQ(service("screen saver").backend, "org.gnome.ScreenSaver");
    // A second one that comes later and speaks from another object; locked is whatever any of them says.
    MockScreenSaver other(sessionBus_, "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", false);
    ASSERT_TRUE(waitUntil([&] { return service("screen saver").backend.starts_with("org.freedesktop"); }));
    other.setActive(true, "/ScreenSaver");
    gnome->setActive(false, "/org/gnome/ScreenSaver");
    other.setActive(false, "/ScreenSaver");
    EXPECT_TRUE(told({"unlock"}));

    gnome->setActive(true, "/org/gnome/ScreenSaver");
    EXPECT_TRUE(told({"lock"}));
    gnome.reset();
    EXPECT_TRUE(told({"unlock"}));

    // The locker that gives the screen back has answered the login manager's request.
    login_->lock("own");
    EXPECT_TRUE(told({"lock"}));
    other.setActive(true, "/ScreenSaver");
    other.setActive(false, "/ScreenSaver");
    EXPECT_TRUE(told({"unlock"}));
}

TEST_F(SessionMonitorTest, ServicesComeAndGo) {
    startMonitor();
    // A bus that is not there is told once, not again by each of its services.
    EXPECT_EQ(monitor_->status().size(), 2u);
    for (const auto* name : {"system bus", "session bus"}) {
        EXPECT_FALSE(isAvailable(name)) << name;
        EXPECT_NE(detail(name).find("not told"), std::string::npos) << name;
    }
    systemBus_.start();
    sessionBus_.start();
    ASSERT_TRUE(waitUntil([&] { return isAvailable("system bus") && isAvailable("session bus"); }));
    EXPECT_FALSE(isAvailable("login manager"));
    startLogin();
    ASSERT_TRUE(waitUntil([&] { return login_->inhibitors() == Texts{"sleep delay"}; }));

    // Without a login manager nobody would tell of the end of a sleep or a lock.
    login_->addSession("own", getuid());
    ASSERT_TRUE(waitUntil([&] { return detail("login manager").ends_with("/own"); }));
    login_->lock("own");
    EXPECT_TRUE(told({"lock"}));
    login_->prepareFor("Sleep", true);
    EXPECT_TRUE(told({"sleep"}));
    login_.reset();
    EXPECT_TRUE(told({"unlock", "wake"}));
    EXPECT_FALSE(isAvailable("login manager"));

    startLogin();
    ASSERT_TRUE(waitUntil([&] { return login_->inhibitors() == Texts{"sleep delay"}; }));
    login_->prepareFor("Sleep", true);
    EXPECT_TRUE(told({"sleep"}));
    systemBus_.kill();
    login_.reset();
    EXPECT_TRUE(told({"wake"}));
    ASSERT_TRUE(waitUntil([&] { return !isAvailable("system bus"); }));
    systemBus_.start();
    startLogin();
    ASSERT_TRUE(waitUntil([&] { return login_->inhibitors() == Texts{"sleep delay"}; }));
    login_->prepareFor("Sleep", true);
    EXPECT_TRUE(told({"sleep"}));
    EXPECT_TRUE(isAvailable("session bus"));
}

}  // namespace
}  // namespace orvane
