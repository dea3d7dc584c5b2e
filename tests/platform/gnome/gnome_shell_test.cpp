#include <gtest/gtest.h>

#include "platform/linux/desktop_choice.h"
#include "platform/linux/gnome/gnome_extension.h"
#include "platform/linux/linux_platform.h"
#include "platform/linux/session/session_monitor.h"
#include "tests/desktops/gnome_desktop.h"
#include "tests/host/program.h"
#include "tests/platform/accessibility/private_accessibility.h"
#include "tests/platform/main_loop_wait.h"

namespace orvane {
namespace {

using Texts = std::vector<std::string>;

constexpr double kLongestWait = 60;

bool isInstalled(const char* program) {
    char* path = g_find_program_in_path(program);
    g_free(path);
    return path != nullptr;
}

class GnomeShellTest : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const char* program : {"gnome-shell", "setpriv"}) {
            if (!isInstalled(program)) GTEST_SKIP() << "left out: " << program << " is not installed";
        }
    }
    void TearDown() override {
        platform_.reset();
        desktop_.reset();
    }

    void start(std::unique_ptr<GnomeDesktop> desktop) {
        desktop_ = std::move(desktop);
        desktop_->start();
        platform_ = std::make_unique<LinuxPlatform>();
        ASSERT_TRUE(waitUntil([this] { return platform_->desktop().isDecided(); }, kLongestWait));
    }
    /// Titles front to back, the active one in brackets, and what lies in another layer with its number.
    Texts windows() {
        Texts result;
        const auto active = platform_->desktop().activeWindow();
        for (const auto& window : platform_->desktop().windows()) {
            auto text = window.title.value_or("untitled");
            if (window.layer != 0) text += " " + std::to_string(window.layer);
            result.push_back(active && active->number == window.number ? "[" + text + "]" : text);
        }
        return result;
    }
    testing::AssertionResult windowsBecome(const Texts& expected) {
        if (waitUntil([&] { return windows() == expected; }, kLongestWait))
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << testing::PrintToString(windows());
    }
    ServiceHealth windowHealth() { return platform_->desktopHealth().front(); }
    test::ProgramRun setUp(const std::string& option = {}) {
        std::vector<std::string> words;
        for (const auto& [name, value] : desktop_->userEnvironment()) words.push_back(name + "=" + value);
        words.insert(words.end(), {ORVANE_PROGRAM, "setup", "gnome"});
        if (!option.empty()) words.push_back(option);
        return test::Program(words, "env").finish();
    }

    std::unique_ptr<GnomeDesktop> desktop_;
    std::unique_ptr<LinuxPlatform> platform_;
};

TEST_F(GnomeShellTest, NothingIsActiveInTheOverviewOrBehindTheLock) {
    start(std::make_unique<GnomeDesktop>());
    desktop_->open("notes", "Shopping");
    EXPECT_TRUE(windowsBecome({"[Shopping]"}));
    desktop_->open("mail", "Inbox");
    EXPECT_TRUE(windowsBecome({"[Inbox]", "Shopping"}));
    for (const auto& [enter, leave] : {std::pair("Main.overview.show()", "Main.overview.hide()"),
                                       std::pair("Main.sessionMode.pushMode('unlock-dialog')",
                                                 "Main.sessionMode.popMode('unlock-dialog')")}) {
        desktop_->evaluate(enter);
        EXPECT_TRUE(windowsBecome({"Inbox", "Shopping"})) << enter;
        desktop_->evaluate(leave);
        EXPECT_TRUE(windowsBecome({"[Inbox]", "Shopping"})) << leave;
    }
    desktop_->evaluate("global.display.focus_window.make_above()");
    EXPECT_TRUE(windowsBecome({"[Inbox 3]", "Shopping"}));
}

TEST_F(GnomeShellTest, SetupInstallsTheExtensionAndTakesItAway) {
    start(std::make_unique<GnomeDesktop>(false));
    EXPECT_FALSE(platform_->desktop().isAvailable());
    EXPECT_EQ(windowHealth().remedy, "orvane setup gnome");

    auto run = setUp();
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_NE(run.output.find(GnomeExtension().folder().string()), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("log out and in"), std::string::npos) << run.output;
    EXPECT_NE(windowHealth().problem.find("log out and in"), std::string::npos) << windowHealth().problem;

    desktop_->kill();
    desktop_->giveSettingsToUser();
    desktop_->start();
    EXPECT_TRUE(waitUntil([this] { return platform_->desktop().isAvailable(); }, kLongestWait));
    EXPECT_EQ(platform_->desktop().name(), "GNOME Shell (extension)");
    run = setUp();
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_NE(run.output.find("is running"), std::string::npos) << run.output;

    run = setUp("--remove");
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_TRUE(waitUntil([this] { return !platform_->desktop().isAvailable(); }, kLongestWait));
    EXPECT_FALSE(std::filesystem::exists(GnomeExtension().folder()));
    EXPECT_NE(setUp("--remove").output.find("no extension"), std::string::npos);

    desktop_->kill();
    run = setUp();
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.errors.find("GNOME Shell does not answer"), std::string::npos) << run.errors;
}

TEST_F(GnomeShellTest, AccessibilityTellsWindowsWithoutTheExtension) {
    if (PrivateAccessibility::registryProgram().empty()) {
        GTEST_SKIP() << "left out: at-spi2-registryd is not installed";
    }
    auto desktop = std::make_unique<GnomeDesktop>(false);
    auto offered = desktop->offerAccessibility();
    // Known to the shell, but switched off.
    ASSERT_EQ(GnomeExtension().install(GnomeDesktop::installedVersion()).problem, "");
    start(std::move(desktop));
    auto& notes = desktop_->open("notes", "Shopping");
    EXPECT_TRUE(windowsBecome({"[Shopping]"}));
    EXPECT_EQ(platform_->desktop().name(), "accessibility (AT-SPI)");
    EXPECT_EQ(platform_->desktop().activeWindow()->processIdentifier, notes.program->identifier());
    EXPECT_EQ(windowHealth().remedy, "orvane setup gnome");
    desktop_->open("mail", "Inbox");
    EXPECT_TRUE(windowsBecome({"[Inbox]", "Shopping"}));
    desktop_->setTitle(notes, "Shopping list");
    EXPECT_TRUE(windowsBecome({"[Inbox]", "Shopping list"}));
    desktop_->activate(notes);
    EXPECT_TRUE(windowsBecome({"[Shopping list]", "Inbox"}));
    desktop_->evaluate("Main.overview.show()");
    EXPECT_TRUE(windowsBecome({"Shopping list", "Inbox"}));
    desktop_->evaluate("Main.overview.hide()");
    EXPECT_TRUE(windowsBecome({"[Shopping list]", "Inbox"}));
    notes.program->stop();
    EXPECT_TRUE(windowsBecome({"Inbox"}));
    notes.program->resume();
    EXPECT_TRUE(windowsBecome({"[Shopping list]", "Inbox"}));
    desktop_->close(notes);
    EXPECT_TRUE(windowsBecome({"[Inbox]"}));
    desktop_->showEmptyDesktop(true);
    EXPECT_TRUE(windowsBecome({"Inbox"}));
    desktop_->showEmptyDesktop(false);
    EXPECT_TRUE(windowsBecome({"[Inbox]"}));

    // The extension is preferred from the moment on which it runs.
    const auto switchExtension = [&](const std::string& change, const std::string& backend) {
        desktop_->evaluate("Main.extensionManager." + change + "Extension('windows@orvane')");
        EXPECT_TRUE(waitUntil([&] { return platform_->desktop().name() == backend; }, kLongestWait))
            << backend;
        EXPECT_TRUE(windowsBecome({"[Inbox]"}));
    };
    switchExtension("enable", "GNOME Shell (extension)");
    switchExtension("disable", "accessibility (AT-SPI)");
    EXPECT_FALSE(offered->wasSwitched());
    offered.reset();
    EXPECT_TRUE(waitUntil([this] { return !platform_->desktop().isAvailable(); }, kLongestWait));
}

}  // namespace
}  // namespace orvane
