#include <gtest/gtest.h>

#include <memory>

#include "platform/linux/desktop_choice.h"
#include "platform/linux/linux_platform.h"
#include "platform/linux/session/session_monitor.h"
#include "tests/desktops/desktop_kinds.h"
#include "tests/desktops/kwin_desktop.h"
#include "tests/platform/main_loop_wait.h"

namespace orvane {
namespace {

/// Scripts in KWin, which are there for one program each.
class KwinScriptsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const auto& kind : desktopKinds()) {
            if (kind.name == "kwinscript" && !kind.missingProgram().empty())
                GTEST_SKIP() << "left out: " << kind.missingProgram() << " is not installed";
        }
    }

    static void waitForWindows(LinuxPlatform& platform) {
        ASSERT_TRUE(waitUntil(
            [&] { return platform.desktop().isDecided() && platform.desktop().isAvailable(); }, 60));
    }
};

TEST_F(KwinScriptsTest, EachProgramHasItsOwnUntilItEnds) {
    KwinDesktop desktop(false);
    desktop.start();
    LinuxPlatform first;
    waitForWindows(first);
    EXPECT_EQ(desktop.ownScripts(), 1);
    {
        LinuxPlatform second;
        waitForWindows(second);
        EXPECT_EQ(desktop.ownScripts(), 2);
    }
    // KWin answers first and deletes the script when it comes to rest.
    EXPECT_TRUE(waitUntil([&] { return desktop.ownScripts() == 1; }, 60));
    auto& notes = desktop.open("notes", "Shopping");
    desktop.activate(notes);
    EXPECT_TRUE(waitUntil([&] { return first.desktop().activeWindow().has_value(); }, 60));
}

TEST_F(KwinScriptsTest, WhatACrashLeavesBehindRemovesItself) {
    KwinDesktop desktop(false);
    desktop.start();
    desktop.leaveScriptBehind();
    EXPECT_EQ(desktop.ownScripts(), 1);
    LinuxPlatform platform;
    waitForWindows(platform);
    EXPECT_TRUE(waitUntil([&] { return desktop.ownScripts() == 1; }, 60));
    auto& notes = desktop.open("notes", "Shopping");
    desktop.activate(notes);
    EXPECT_TRUE(waitUntil([&] { return platform.desktop().activeWindow().has_value(); }, 60));
}

TEST_F(KwinScriptsTest, NoneIsNeededWithPermission) {
    KwinDesktop desktop(true);
    desktop.start();
    LinuxPlatform platform;
    waitForWindows(platform);
    EXPECT_EQ(platform.desktop().name(), "KWin (window management)");
    // The bus has told of KWin by now, since the session's part is told later.
    ASSERT_TRUE(waitUntil([&] { return platform.session().isDecided(); }, 60));
    EXPECT_EQ(desktop.ownScripts(), 0);
}

}  // namespace
}  // namespace orvane
