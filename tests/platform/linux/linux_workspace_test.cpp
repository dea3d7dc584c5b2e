#include "platform/linux/linux_workspace.h"

#include <gtest/gtest.h>

#include <map>

#include "desktop_fixture.h"
#include "platform/linux/linux_window_server.h"

namespace orvane::testing {
namespace {

/// A desktop that is what the test says.
class ScriptedBackend : public DesktopBackend {
  public:
    std::string name() const override { return "scripted"; }
    bool isAvailable() const override { return available; }
    std::optional<DesktopWindow> activeWindow() override {
        return available && !shown.empty() ? std::optional(shown.front()) : std::nullopt;
    }
    std::vector<DesktopWindow> windows() override {
        ++lists;
        return shown;
    }
    std::optional<double> idleSeconds() override { return idle; }

    bool available = true;
    std::vector<DesktopWindow> shown;
    std::optional<double> idle;
    int lists = 0;
};

DesktopWindow windowOf(std::int64_t number, std::int32_t process, const std::string& windowClass) {
    return {number, process, 0, "title " + std::to_string(number), windowClass, {}, {}};
}

class LinuxWorkspaceTest : public ::testing::Test {
  protected:
    LinuxWorkspaceTest() {
        workspace_.notificationCenter().addObserver(this, [this](const Notification& notification) {
            static const std::map<std::string, std::string> shortNames{
                {NSWorkspaceScreensDidSleepNotification, "dark"},
                {NSWorkspaceScreensDidWakeNotification, "light"},
                {NSWorkspaceWillSleepNotification, "sleep"},
                {NSWorkspaceDidWakeNotification, "wake"}};
            const auto name = shortNames.find(notification.name);
            if (!told_.empty()) told_ += ' ';
            if (name == shortNames.end())
                told_ += *notification.userInfo["NSApplicationBundleIdentifier"].asString();
            else
                told_ += name->second;
        });
        workspace_.setBackend(&backend_);
    }

    void show(const DesktopWindow& window) {
        backend_.shown = {window};
        backend_.onActiveWindowChanged();
    }
    std::string taken() { return std::exchange(told_, {}); }

    ScriptedBackend backend_;
    ApplicationDirectory directory_{freshFolder("workspace-proc")};
    LinuxWorkspace workspace_{directory_};
    LinuxWindowServer windows_{directory_};
    std::string told_;
};

TEST_F(LinuxWorkspaceTest, AnnouncesApplicationsNotWindows) {
    show(windowOf(1, 10, "Alpha"));
    show(windowOf(2, 10, "Alpha"));
    backend_.shown.clear();
    backend_.onActiveWindowChanged();
    show(windowOf(1, 10, "Alpha"));
    EXPECT_EQ(taken(), "alpha");
    show(windowOf(3, 11, "Alpha"));
    EXPECT_EQ(taken(), "alpha") << "another process of the same application";
    show(windowOf(4, 12, "Beta"));
    EXPECT_EQ(taken(), "beta");
    EXPECT_EQ(workspace_.frontmostApplication()->processIdentifier, 12);
}

TEST_F(LinuxWorkspaceTest, ALockIsADarkScreen) {
    show(windowOf(1, 10, "Alpha"));
    taken();
    workspace_.setLocked(true);
    backend_.onScreenSleepChanged(true);
    EXPECT_EQ(taken(), "dark") << "told once for both";
    EXPECT_EQ(workspace_.frontmostApplication()->bundleIdentifier, loginWindowIdentifier);
    show(windowOf(2, 12, "Beta"));
    EXPECT_EQ(taken(), "");
    backend_.onScreenSleepChanged(false);
    EXPECT_EQ(taken(), "") << "still locked";
    workspace_.setLocked(false);
    EXPECT_EQ(taken(), "light beta");
    EXPECT_EQ(workspace_.frontmostApplication()->bundleIdentifier, "beta");

    // Back, but at no application yet: the announcement waits for one, even for the same one.
    workspace_.setLocked(true);
    backend_.shown.clear();
    workspace_.setLocked(false);
    EXPECT_EQ(taken(), "dark light");
    show(windowOf(2, 12, "Beta"));
    EXPECT_EQ(taken(), "beta");
}

TEST_F(LinuxWorkspaceTest, SleepEndsWithTheUserBackAtAnApplication) {
    show(windowOf(1, 10, "Alpha"));
    taken();
    workspace_.setSystemSleeping(true);
    workspace_.setSystemSleeping(true);
    show(windowOf(2, 12, "Beta"));
    EXPECT_EQ(taken(), "sleep");
    workspace_.setLocked(true);
    workspace_.setSystemSleeping(false);
    EXPECT_EQ(taken(), "dark wake") << "locked on the way to sleep";
    workspace_.setLocked(false);
    EXPECT_EQ(taken(), "light beta");
}

TEST_F(LinuxWorkspaceTest, ADesktopThatGoesAndComesBack) {
    show(windowOf(1, 10, "Alpha"));
    taken();
    backend_.onScreenSleepChanged(true);
    backend_.available = false;
    backend_.onAvailabilityChanged(false);
    EXPECT_EQ(taken(), "dark");
    EXPECT_FALSE(workspace_.frontmostApplication());
    backend_.available = true;
    backend_.onAvailabilityChanged(true);
    EXPECT_EQ(taken(), "light alpha") << "the old server's sleep is over as well";

    workspace_.setBackend(nullptr);
    EXPECT_FALSE(workspace_.frontmostApplication());
    EXPECT_FALSE(backend_.onActiveWindowChanged);
}

TEST_F(LinuxWorkspaceTest, DescribesOneSnapshotOfTheWindows) {
    EXPECT_TRUE(windows_.windowListCreate(17, kCGNullWindowID).empty());
    EXPECT_EQ(windows_.secondsSinceLastEventType(0, kCGAnyInputEventType), 0);
    windows_.setBackend(&backend_);
    backend_.idle = 12.5;
    EXPECT_EQ(windows_.secondsSinceLastEventType(0, kCGAnyInputEventType), 12.5);

    addProcess(fixtureRoot() / "workspace-proc", 10, {"/opt/alpha", {"alpha"}});
    backend_.shown = {windowOf(5, 10, "Alpha"), windowOf(3, 11, "Beta"), windowOf(4, 0, "")};
    backend_.shown[1].title.reset();
    backend_.shown[2].layer = 25;
    const auto numbers = windows_.windowListCreate(17, kCGNullWindowID);
    EXPECT_EQ(numbers, (std::vector<WindowIdentifier>{5, 3, 4}));
    const auto described = windows_.windowListCreateDescriptionFromArray(numbers);
    EXPECT_EQ(backend_.lists, 1);
    ASSERT_EQ(described.size(), 3U);
    EXPECT_EQ(described[0], (Dictionary{{kCGWindowNumber, 5},
                                        {kCGWindowOwnerPID, 10},
                                        {kCGWindowLayer, 0},
                                        {kCGWindowName, "title 5"},
                                        {kCGWindowOwnerName, "alpha"}}));
    EXPECT_FALSE(described[1].contains(kCGWindowName));
    EXPECT_EQ(described[1][kCGWindowOwnerName], Value("Beta"));
    EXPECT_EQ(described[2][kCGWindowLayer], Value(25));

    backend_.shown.erase(backend_.shown.begin());
    EXPECT_EQ(windows_.windowListCreateDescriptionFromArray(numbers).size(), 2U) << "one went meanwhile";
    EXPECT_EQ(windows_.windowListCreate(17, 4), std::vector<WindowIdentifier>{4});
}

}  // namespace
}  // namespace orvane::testing
