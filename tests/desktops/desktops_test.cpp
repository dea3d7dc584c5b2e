#include <chrono>

#include "platform/linux/desktop_choice.h"
#include "tests/desktops/tracked_desktop.h"
#include "tests/platform/main_loop_wait.h"

namespace orvane {
namespace {

using Texts = std::vector<std::string>;
using Seconds = std::chrono::duration<double>;

class DesktopTest : public TrackedDesktop {};

INSTANTIATE_TEST_SUITE_P(All, DesktopTest, ::testing::ValuesIn(desktopKinds()),
                         [](const auto& kind) { return kind.param.name; });

TEST_P(DesktopTest, TellsWindowsAsTheyChange) {
    auto& notes = openInFront("notes", "Shopping");
    EXPECT_EQ(platform().desktop().name(), GetParam().backend);
    if (desktop().tellsProcesses()) {
        EXPECT_EQ(platform().workspace().frontmostApplication()->processIdentifier,
                  notes.program->identifier());
    }
    EXPECT_TRUE(told({"org.example.Notes"}));
    auto& mail = openInFront("mail", "Inbox");
    EXPECT_TRUE(told({"org.example.Mail"}));
    EXPECT_TRUE(windowsBecome({"Mail: Inbox", "Notes: Shopping"}));
    desktop().setTitle(mail, "Inbox – 1 neue");
    EXPECT_TRUE(frontBecomes("org.example.Mail: Inbox – 1 neue"));

    desktop().activate(notes);
    EXPECT_TRUE(frontBecomes("org.example.Notes: Shopping"));
    EXPECT_TRUE(told({"org.example.Notes"}));
    EXPECT_TRUE(windowsBecome({"Notes: Shopping", "Mail: Inbox – 1 neue"}));
    desktop().close(notes);
    EXPECT_TRUE(frontBecomes("org.example.Mail: Inbox – 1 neue"));
    EXPECT_TRUE(windowsBecome({"Mail: Inbox – 1 neue"}));
    EXPECT_TRUE(told({"org.example.Mail"}));

    desktop().minimize(mail);
    EXPECT_TRUE(frontBecomes("none"));
    EXPECT_TRUE(windowsVanish());
    desktop().activate(mail);
    EXPECT_TRUE(frontBecomes("org.example.Mail: Inbox – 1 neue"));
}

TEST_P(DesktopTest, EachServiceIsInUseAndSaysWhatItSees) {
    openInFront("notes", "Shopping");
    ASSERT_TRUE(waitUntil([this] { return platform().desktopHealth()[1].isGood; }, 60));
    Texts services;
    for (const auto& health : platform().desktopHealth()) {
        // There is no screen saver before somebody locks.
        if (health.service == "screen saver") continue;
        services.push_back(health.service);
        EXPECT_TRUE(health.isGood) << health.service << ": " << health.problem;
        EXPECT_NE(health.sees, "") << health.service;
        EXPECT_EQ(health.remedy, "") << health.service;
        if (health.service == "windows") {
            EXPECT_EQ(health.backend, GetParam().backend);
            EXPECT_TRUE(health.sees.starts_with("1 on screen, in front org.example.Notes")) << health.sees;
            EXPECT_TRUE(health.sees.ends_with(": Shopping")) << health.sees;
        }
    }
    EXPECT_EQ(Texts(services.begin(), services.begin() + 3), (Texts{"windows", "idle time", "screen power"}));
}

TEST_P(DesktopTest, AnEmptyDesktopHasNothingInFront) {
    openInFront("notes", "Shopping");
    desktop().showEmptyDesktop(true);
    EXPECT_TRUE(frontBecomes("none"));
    EXPECT_TRUE(windowsVanish());
    desktop().showEmptyDesktop(false);
    EXPECT_TRUE(frontBecomes("org.example.Notes: Shopping"));
}

TEST_P(DesktopTest, IdleTimeRisesUntilSomethingIsTouched) {
    for (int round = 0; round < 2; ++round) {
        desktop().touch();
        ASSERT_TRUE(waitUntil([this] { return idle() < 1; }, 60));
        const auto touched = std::chrono::steady_clock::now();
        ASSERT_TRUE(waitUntil([this] { return idle() >= 3.5; }, 60));
        const double rest = Seconds(std::chrono::steady_clock::now() - touched).count();
        EXPECT_NEAR(idle(), rest, 1.5);
    }
}

TEST_P(DesktopTest, LocksSleepAndDarkScreens) {
    openInFront("notes", "Shopping");
    ASSERT_TRUE(told({"org.example.Notes"}));
    desktop().lock(true);
    EXPECT_TRUE(told({"dark"}));
    EXPECT_EQ(platform().workspace().frontmostApplication()->bundleIdentifier, loginWindowIdentifier);
    desktop().lock(false);
    EXPECT_TRUE(told({"light", "org.example.Notes"}));
    desktop().sleep(true);
    EXPECT_TRUE(told({"sleep"}));
    desktop().sleep(false);
    EXPECT_TRUE(told({"wake", "org.example.Notes"}));
    if (!desktop().switchScreens(false)) return;
    EXPECT_TRUE(told({"dark"}));
    desktop().switchScreens(true);
    EXPECT_TRUE(told({"light", "org.example.Notes"}));
}

TEST_P(DesktopTest, ACompositorThatDiesAndComesBack) {
    openInFront("notes", "Shopping");
    ASSERT_TRUE(told({"org.example.Notes"}));
    int healthNotices = 0;
    platform().defaultNotificationCenter().addObserver(
        this, [&](const Notification&) { ++healthNotices; }, DesktopHealthDidChangeNotification);
    EXPECT_TRUE(platform().desktopHealth().front().isGood);
    EXPECT_TRUE(comesToRest());

    desktop().kill();
    EXPECT_TRUE(told({"dark"}));
    EXPECT_EQ(front(), "none");
    EXPECT_EQ(windows(), Texts{});
    EXPECT_TRUE(waitUntil([&] { return healthNotices > 0; }));
    const auto health = platform().desktopHealth().front();
    EXPECT_FALSE(health.isGood);
    EXPECT_NE(health.problem, "");
    EXPECT_TRUE(comesToRest());

    desktop().start();
    const auto started = std::chrono::steady_clock::now();
    EXPECT_TRUE(waitUntil([&] { return platform().desktop().isAvailable(); }, 60));
    EXPECT_LT(Seconds(std::chrono::steady_clock::now() - started).count(), 5);
    EXPECT_TRUE(told({"light"}));
    openInFront("mail", "Inbox");
    EXPECT_TRUE(told({"org.example.Mail"}));
    EXPECT_EQ(platform().desktop().name(), GetParam().backend);
    desktop().touch();
    EXPECT_TRUE(waitUntil([this] { return platform().desktop().idleSeconds().value_or(99) < 1; }, 60));
    EXPECT_TRUE(comesToRest());
}

}  // namespace
}  // namespace orvane
