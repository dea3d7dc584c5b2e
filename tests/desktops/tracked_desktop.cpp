#include "tests/desktops/tracked_desktop.h"

#include <algorithm>
#include <map>

#include "platform/linux/desktop_choice.h"
#include "platform/linux/session/session_monitor.h"
#include "tests/platform/main_loop_wait.h"

namespace orvane {

namespace {

// Other programs keep the machine busy.
constexpr double kLongestWait = 60;

std::string textOf(const Value& value) {
    const auto* text = value.asString();
    return text != nullptr ? *text : "none";
}

}  // namespace

VirtualTimePlatform::VirtualTimePlatform(LinuxPlatform& desktop) : desktop_(desktop) {}

std::vector<WindowIdentifier> VirtualTimePlatform::IdleScale::windowListCreate(std::uint32_t options,
                                                                               WindowIdentifier reference) {
    return desktop.windowServer().windowListCreate(options, reference);
}

std::vector<Dictionary> VirtualTimePlatform::IdleScale::windowListCreateDescriptionFromArray(
    std::span<const WindowIdentifier> windows) {
    return desktop.windowServer().windowListCreateDescriptionFromArray(windows);
}

double VirtualTimePlatform::IdleScale::secondsSinceLastEventType(std::int32_t state,
                                                                 std::uint32_t eventType) {
    return idleFactor * desktop.windowServer().secondsSinceLastEventType(state, eventType);
}

void TrackedDesktop::SetUp() {
    if (const auto missing = GetParam().missingProgram(); !missing.empty()) {
        GTEST_SKIP() << "left out: " << missing << " is not installed";
    }
    desktop_ = GetParam().make();
    desktop_->start();
    platform_ = std::make_unique<LinuxPlatform>();
    platform_->workspace().notificationCenter().addObserver(this, [this](const Notification& notification) {
        static const std::map<std::string, std::string> kShortNames{
            {NSWorkspaceScreensDidSleepNotification, "dark"},
            {NSWorkspaceScreensDidWakeNotification, "light"},
            {NSWorkspaceWillSleepNotification, "sleep"},
            {NSWorkspaceDidWakeNotification, "wake"}};
        const auto name = kShortNames.find(notification.name);
        const Value identifier = notification.userInfo["NSApplicationBundleIdentifier"];
        told_.push_back(name != kShortNames.end() ? name->second : textOf(identifier));
    });
    ASSERT_TRUE(
        waitUntil([this] { return platform_->session().isDecided() && platform_->desktop().isDecided(); },
                  kLongestWait));
    // Some desktops answer a moment after they were asked.
    told_.clear();
}

void TrackedDesktop::TearDown() {
    platform_.reset();
    desktop_.reset();
}

std::string TrackedDesktop::front() {
    const auto application = platform_->workspace().frontmostApplication();
    if (!application) return "none";
    std::string title;
    if (const auto window = platform_->desktop().activeWindow()) title = window->title.value_or("untitled");
    return application->bundleIdentifier.value_or("unknown") + ": " + title;
}

std::vector<std::string> TrackedDesktop::windows() {
    auto& server = platform_->windowServer();
    std::vector<std::string> result;
    for (const auto& window :
         server.windowListCreateDescriptionFromArray(server.windowListCreate(17, kCGNullWindowID))) {
        result.push_back(textOf(window[kCGWindowOwnerName]) + ": " + textOf(window[kCGWindowName]));
    }
    return result;
}

double TrackedDesktop::idle() {
    return platform_->windowServer().secondsSinceLastEventType(kCGEventSourceStateCombinedSessionState,
                                                               kCGAnyInputEventType);
}

TestDesktop::Window& TrackedDesktop::openInFront(const std::string& program, const std::string& title) {
    auto& window = desktop_->open(program, title);
    desktop_->activate(window);
    EXPECT_TRUE(frontBecomes(window.identifier + ": " + title));
    return window;
}

template <typename Value>
::testing::AssertionResult TrackedDesktop::becomes(const std::function<Value()>& read,
                                                   const Value& expected) {
    if (waitUntil([&] { return read() == expected; }, kLongestWait)) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "still " << ::testing::PrintToString(read()) << " instead of "
                                         << ::testing::PrintToString(expected);
}

::testing::AssertionResult TrackedDesktop::frontBecomes(const std::string& expected) {
    return becomes<std::string>([this] { return front(); }, expected);
}

::testing::AssertionResult TrackedDesktop::windowsBecome(const std::vector<std::string>& expected) {
    const auto inOrder = [this](std::vector<std::string> list) {
        if (!desktop_->tellsOrder()) std::sort(list.begin(), list.end());
        return list;
    };
    return becomes<std::vector<std::string>>([&] { return inOrder(windows()); }, inOrder(expected));
}

::testing::AssertionResult TrackedDesktop::windowsVanish() {
    return desktop_->tellsVisibility() ? windowsBecome({}) : ::testing::AssertionSuccess();
}

::testing::AssertionResult TrackedDesktop::told(const std::vector<std::string>& expected) {
    const auto result = becomes<std::vector<std::string>>([this] { return told_; }, expected);
    told_.clear();
    return result;
}

}  // namespace orvane
