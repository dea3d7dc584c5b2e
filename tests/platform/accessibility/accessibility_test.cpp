#include <gtest/gtest.h>

#include <chrono>

#include "platform/linux/accessibility/atspi_accessibility.h"
#include "tests/platform/accessibility/private_accessibility.h"
#include "tests/platform/main_loop_wait.h"
#include "tests/platform/x11/private_display.h"

namespace orvane {
namespace {

constexpr double kLongestWait = 60;

/// Real programs with real windows that offer themselves to assistive programs.
class AccessibilityTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (PrivateAccessibility::registryProgram().empty()) {
            GTEST_SKIP() << "left out: at-spi2-registryd is not installed";
        }
        char* xvfb = g_find_program_in_path("Xvfb");
        if (xvfb == nullptr) GTEST_SKIP() << "left out: Xvfb is not installed";
        g_free(xvfb);
        session_.start();
        offered_ = std::make_unique<PrivateAccessibility>(session_);
        display_.startServer();
        display_.startWindowManager();
        sharedBus_ = std::make_unique<SharedBus>(session_.address());
        bus_ = std::make_unique<AccessibilityBus>(*sharedBus_);
        accessibility_ = std::make_unique<AtspiAccessibility>(*bus_);
        sharedBus_->open();
        ASSERT_TRUE(waitUntil([this] { return accessibility_->isProcessTrusted(); }, kLongestWait));
    }

    std::unique_ptr<ChildProcess> open(const std::string& title) {
        auto program = std::make_unique<ChildProcess>(
            std::vector<std::string>{"/usr/bin/python3", ORVANE_SOURCE_DIR "/tests/desktops/window.py",
                                     title},
            std::map<std::string, std::string>{{"DISPLAY", display_.name()},
                                               {"GDK_BACKEND", "x11"},
                                               {"GSETTINGS_BACKEND", "memory"},
                                               {"DBUS_SESSION_BUS_ADDRESS", session_.address()},
                                               {"AT_SPI_BUS_ADDRESS", offered_->address()}});
        EXPECT_TRUE(program->readLine().starts_with("shown"));
        return program;
    }
    /// What the tracker learns of the process; "none" without a focused window.
    std::string title(std::int32_t process) {
        AccessibilityValue focused;
        const int status = accessibility_->createApplication(process)->copyAttributeValue(
            NSAccessibilityFocusedWindowAttribute, focused);
        const auto* window = std::get_if<std::shared_ptr<AccessibilityElement>>(&focused);
        EXPECT_EQ(status == 0, window != nullptr);
        if (window == nullptr) return "none";
        AccessibilityValue text;
        EXPECT_EQ((*window)->copyAttributeValue(kAXTitleAttribute, text), 0);
        return std::get<std::string>(text);
    }
    testing::AssertionResult titleBecomes(ChildProcess& program, const std::string& expected) {
        if (waitUntil([&] { return title(program.identifier()) == expected; }, kLongestWait)) {
            return testing::AssertionSuccess();
        }
        return testing::AssertionFailure() << title(program.identifier());
    }

    PrivateBus session_;
    std::unique_ptr<PrivateAccessibility> offered_;
    PrivateDisplay display_;
    std::unique_ptr<SharedBus> sharedBus_;
    std::unique_ptr<AccessibilityBus> bus_;
    std::unique_ptr<AtspiAccessibility> accessibility_;
};

TEST_F(AccessibilityTest, TheTitleOfAProcesssFocusedWindow) {
    const auto first = open("First");
    EXPECT_TRUE(titleBecomes(*first, "First"));
    first->writeLine("title Erste – größer");
    EXPECT_TRUE(titleBecomes(*first, "Erste – größer"));
    const auto second = open("Second");
    EXPECT_TRUE(titleBecomes(*second, "Second"));
    EXPECT_TRUE(titleBecomes(*first, "none"));
    EXPECT_EQ(title(getpid()), "none");
    second->kill();
    EXPECT_TRUE(titleBecomes(*first, "Erste – größer"));

    // Elements may be kept, and the bus may go.
    const auto kept = accessibility_->createApplication(first->identifier());
    offered_.reset();
    EXPECT_TRUE(waitUntil([this] { return !accessibility_->isProcessTrusted(); }, kLongestWait));
    accessibility_.reset();
    AccessibilityValue focused;
    EXPECT_NE(kept->copyAttributeValue(NSAccessibilityFocusedWindowAttribute, focused), 0);
}

TEST_F(AccessibilityTest, AnApplicationThatHangsIsGivenUp) {
    const auto hanging = open("Hanging");
    const auto other = open("Other");
    EXPECT_TRUE(titleBecomes(*other, "Other"));
    hanging->stop();
    // Without the deadline, each of these would wait for 25 seconds.
    const auto started = std::chrono::steady_clock::now();
    for (int poll = 0; poll < 5; ++poll) {
        EXPECT_EQ(title(hanging->identifier()), "none");
        EXPECT_EQ(title(other->identifier()), "Other");
    }
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
    hanging->resume();
    other->kill();
    EXPECT_TRUE(titleBecomes(*hanging, "Hanging"));
}

}  // namespace
}  // namespace orvane
