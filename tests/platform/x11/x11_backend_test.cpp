#include "platform/linux/x11/x11_backend.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>

#include "tests/platform/main_loop_wait.h"
#include "tests/platform/x11/private_display.h"
#include "tests/platform/x11/test_windows.h"

namespace orvane {
namespace {

class X11BackendTest : public testing::Test {
  protected:
    X11BackendTest() {
        startDesktop();
        backend_ = std::make_unique<X11Backend>(
            display_.name(), [this](X11Connection&) { return std::optional<bool>(screensOff_); });
        backend_->onActiveWindowChanged = [this] {
            const auto window = backend_->activeWindow();
            notices_.push_back(window ? window->title.value_or("") : "none");
        };
        backend_->onScreenSleepChanged = [this](bool asleep) {
            notices_.push_back(asleep ? "asleep" : "awake");
        };
        backend_->onAvailabilityChanged = [this](bool available) {
            notices_.push_back(available ? "available" : "gone");
        };
    }

    void startDesktop() {
        windows_ = std::make_unique<TestWindows>(display_.name());
        display_.startWindowManager();
    }
    std::string activeTitle() {
        const auto window = backend_->activeWindow();
        return window ? window->title.value_or("untitled") : "none";
    }
    std::vector<std::string> titles() {
        std::vector<std::string> result;
        for (const auto& window : backend_->windows()) result.push_back(window.title.value_or("untitled"));
        return result;
    }
    std::optional<DesktopWindow> find(xcb_window_t number) {
        const auto all = backend_->windows();
        const auto found =
            std::find_if(all.begin(), all.end(), [&](auto& window) { return window.number == number; });
        return found == all.end() ? std::nullopt : std::optional(*found);
    }
    xcb_window_t openInFront(const char* title) {
        const auto window = windows_->open(title);
        EXPECT_TRUE(waitUntil([&] { return find(window).has_value(); }));
        windows_->activate(window);
        EXPECT_TRUE(waitUntil([&] { return !notices_.empty() && notices_.back() == title; })) << title;
        return window;
    }

    PrivateDisplay display_;
    std::unique_ptr<TestWindows> windows_;
    bool screensOff_ = false;
    std::unique_ptr<X11Backend> backend_;
    std::vector<std::string> notices_;
};

using Texts = std::vector<std::string>;

TEST_F(X11BackendTest, SwitchingClosingAndMinimizing) {
    EXPECT_TRUE(backend_->isAvailable());
    EXPECT_EQ(backend_->activeWindow(), std::nullopt);

    const auto first = openInFront("first");
    const auto second = openInFront("second");
    EXPECT_EQ(titles(), (Texts{"second", "first"}));
    notices_.clear();
    windows_->activate(first);
    ASSERT_TRUE(waitUntil([&] { return !notices_.empty(); }));
    EXPECT_TRUE(waitUntil([&] { return titles() == Texts{"first", "second"}; }));
    windows_->setText(first, "_NET_WM_NAME", "UTF8_STRING", "first, edited");
    EXPECT_TRUE(waitUntil([&] { return activeTitle() == "first, edited"; }));

    windows_->minimize(first);
    ASSERT_TRUE(waitUntil([&] { return notices_.size() == 2; })) << testing::PrintToString(notices_);
    EXPECT_EQ(titles(), Texts{"second"});
    windows_->close(second);
    ASSERT_TRUE(waitUntil([&] { return notices_.size() == 3; })) << testing::PrintToString(notices_);
    EXPECT_EQ(titles(), Texts{});
    // One notice each, none of them for the moments without an active window between two.
    EXPECT_EQ(notices_, (Texts{"first", "second", "none"}));

    const auto third = openInFront("third");
    windows_->minimize(third);
    EXPECT_TRUE(waitUntil([&] { return notices_.back() == "none"; }));
    windows_->activate(third);
    EXPECT_TRUE(waitUntil([&] { return notices_.back() == "third"; }));
}

TEST_F(X11BackendTest, PassingThroughNoneIsNotTold) {
    const auto first = openInFront("first");
    const auto second = openInFront("second");
    display_.killWindowManager();
    ASSERT_TRUE(waitUntil([&] { return notices_.back() == "none"; }));
    windows_->beWindowManager();
    windows_->claimActive(first);
    ASSERT_TRUE(waitUntil([&] { return notices_.back() == "first"; }));
    notices_.clear();

    // All three stand in the queue before the backend looks, however busy the machine is.
    windows_->claimActive(XCB_WINDOW_NONE);
    windows_->claimActive(second);
    windows_->claimActive(second);
    ASSERT_TRUE(waitUntil([&] { return !notices_.empty(); }));
    windows_->claimActive(XCB_WINDOW_NONE);
    ASSERT_TRUE(waitUntil([&] { return notices_.size() == 2; })) << testing::PrintToString(notices_);
    EXPECT_EQ(notices_, (Texts{"second", "none"}));
    EXPECT_EQ(activeTitle(), "none");
}

TEST_F(X11BackendTest, LayersAndWindowsThatAreNotOnScreen) {
    const auto open = [&](const char* title, const char* property, const char* value) {
        const auto window = windows_->create(title);
        windows_->setAtoms(window, property, {"_UNKNOWN_TO_EVERYBODY", value});
        windows_->show(window);
        return window;
    };
    const auto plain = windows_->open("plain");
    const auto dialog = open("dialog", "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_DIALOG");
    const auto dock = open("dock", "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_DOCK");
    const auto notice = open("notice", "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_NOTIFICATION");
    const auto above = open("above", "_NET_WM_STATE", "_NET_WM_STATE_ABOVE");
    const auto below = open("below", "_NET_WM_STATE", "_NET_WM_STATE_BELOW");
    const auto wallpaper = open("wallpaper", "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_DESKTOP");
    const auto elsewhere = windows_->open("elsewhere");
    ASSERT_TRUE(waitUntil([&] { return backend_->windows().size() == 7 && find(elsewhere); }));
    EXPECT_FALSE(find(wallpaper));
    windows_->moveToDesktop(elsewhere, 1);
    EXPECT_TRUE(waitUntil([&] { return !find(elsewhere); }));
    windows_->moveToDesktop(elsewhere, 0xFFFFFFFF);
    EXPECT_TRUE(waitUntil([&] { return find(elsewhere).has_value(); }));

    EXPECT_EQ(find(plain)->layer, 0);
    EXPECT_EQ(find(dialog)->layer, 0);
    EXPECT_GT(find(dock)->layer, 0);
    EXPECT_GT(find(notice)->layer, 0);
    EXPECT_GT(find(above)->layer, 0);
    EXPECT_LT(find(below)->layer, 0);
}

TEST_F(X11BackendTest, ProcessesAndTexts) {
    const auto window = windows_->create("");
    windows_->setText(window, "WM_NAME", "STRING", "Caf\xe9 \x80");
    windows_->setText(window, "WM_CLASS", "STRING", std::string_view("instance\0Class\0", 15));
    windows_->setText(window, "_GTK_APPLICATION_ID", "UTF8_STRING", "org.example.Application");
    // A program in a container tells the number that it has there.
    windows_->setNumber(window, "_NET_WM_PID", 2);
    windows_->show(window);
    ASSERT_TRUE(waitUntil([&] { return find(window).has_value(); }));
    const auto found = *find(window);
    EXPECT_EQ(found.processIdentifier, getpid());
    EXPECT_EQ(found.title, "Caf\u00e9 \u0080");
    EXPECT_EQ(found.windowInstance, "instance");
    EXPECT_EQ(found.windowClass, "Class");
    EXPECT_EQ(found.gtkApplicationId, "org.example.Application");

    windows_->setText(window, "_NET_WM_NAME", "UTF8_STRING", "broken \xff\xfe end");
    EXPECT_TRUE(waitUntil([&] { return find(window)->title == "broken \uFFFD\uFFFD end"; }));

    const ChildProcess terminal({"xterm", "-title", "terminal", "-e", "cat"}, {{"DISPLAY", display_.name()}});
    ASSERT_TRUE(waitUntil([&] { return backend_->windows().size() == 2; }));
    const auto all = backend_->windows();
    const auto isTerminal = [](const DesktopWindow& each) { return each.title == "terminal"; };
    const auto shown = std::find_if(all.begin(), all.end(), isTerminal);
    ASSERT_NE(shown, all.end());
    EXPECT_EQ(shown->processIdentifier, terminal.identifier());
    EXPECT_EQ(shown->windowClass, "XTerm");
}

TEST_F(X11BackendTest, IdleTimeAndSleepingScreens) {
    ASSERT_TRUE(backend_->idleSeconds().has_value());
    ASSERT_TRUE(waitUntil([&] { return backend_->idleSeconds() > 0.2; }));
    const auto before = *backend_->idleSeconds();
    display_.moveMouse();
    EXPECT_TRUE(waitUntil([&] { return backend_->idleSeconds() < before; }));

    windows_->runScreenSaver(true);
    ASSERT_TRUE(waitUntil([&] { return !notices_.empty(); }));
    windows_->runScreenSaver(false);
    ASSERT_TRUE(waitUntil([&] { return notices_.size() == 2; })) << testing::PrintToString(notices_);

    // Monitors that went off are seen the next time somebody asks; that they are back is seen unasked.
    screensOff_ = true;
    backend_->idleSeconds();
    ASSERT_TRUE(waitUntil([&] { return notices_.size() == 3; })) << testing::PrintToString(notices_);
    screensOff_ = false;
    ASSERT_TRUE(waitUntil([&] { return notices_.size() == 4; }));
    EXPECT_EQ(notices_, (Texts{"asleep", "awake", "asleep", "awake"}));
}

TEST_F(X11BackendTest, WindowManagerDies) {
    openInFront("window");
    display_.killWindowManager();
    EXPECT_TRUE(waitUntil([&] { return notices_.back() == "none"; }));
    EXPECT_EQ(backend_->activeWindow(), std::nullopt);
    EXPECT_EQ(titles(), Texts{});
    EXPECT_TRUE(backend_->isAvailable());
    display_.startWindowManager();
    EXPECT_TRUE(waitUntil([&] { return titles() == Texts{"window"}; }));
    openInFront("after");
}

TEST_F(X11BackendTest, ServerDiesAndComesBack) {
    openInFront("before");
    windows_->runScreenSaver(true);
    ASSERT_TRUE(waitUntil([&] { return notices_.back() == "asleep"; }));
    notices_.clear();
    display_.killServer();
    // Without the main loop having run, the calls find out by themselves.
    EXPECT_EQ(backend_->activeWindow(), std::nullopt);
    EXPECT_EQ(titles(), Texts{});
    EXPECT_EQ(backend_->idleSeconds(), std::nullopt);
    ASSERT_TRUE(waitUntil([&] { return notices_.size() == 3; })) << testing::PrintToString(notices_);
    EXPECT_EQ(notices_, (Texts{"gone", "awake", "none"}));
    EXPECT_FALSE(backend_->isAvailable());

    notices_.clear();
    display_.startServer();
    startDesktop();
    ASSERT_TRUE(waitUntil([&] { return backend_->isAvailable() && !notices_.empty(); }));
    EXPECT_EQ(notices_.front(), "available");
    openInFront("after");
    EXPECT_EQ(titles(), Texts{"after"});
}

TEST_F(X11BackendTest, ServerThatHangsDelaysOneCallOnly) {
    openInFront("window");
    display_.server().stop();
    EXPECT_EQ(backend_->activeWindow(), std::nullopt);
    const auto start = g_get_monotonic_time();
    for (int i = 0; i < 20; ++i) EXPECT_EQ(backend_->idleSeconds(), std::nullopt);
    EXPECT_LT(g_get_monotonic_time() - start, 2 * G_USEC_PER_SEC);
    EXPECT_TRUE(backend_->isAvailable());
    display_.server().resume();
    EXPECT_TRUE(waitUntil([&] { return activeTitle() == "window"; }));
    EXPECT_EQ(titles(), Texts{"window"});
}

TEST_F(X11BackendTest, MayBeDestroyedByItsCallback) {
    backend_->onAvailabilityChanged = [this](bool) { backend_.reset(); };
    display_.killServer();
    EXPECT_TRUE(waitUntil([&] { return backend_ == nullptr; }));
    runWhatIsDue();
}

TEST(X11BackendWithoutServer, IsAbsentAndFindsOneThatStartsLater) {
    X11Backend none("");
    EXPECT_FALSE(none.isAvailable());
    EXPECT_EQ(none.idleSeconds(), std::nullopt);

    PrivateDisplay display;
    display.killServer();
    X11Backend backend(display.name());
    EXPECT_FALSE(backend.isAvailable());
    EXPECT_EQ(backend.activeWindow(), std::nullopt);
    bool available = false;
    backend.onAvailabilityChanged = [&](bool isAvailable) { available = isAvailable; };
    display.startServer();
    EXPECT_TRUE(waitUntil([&] { return available; }));
    EXPECT_TRUE(backend.idleSeconds().has_value());
}

}  // namespace
}  // namespace orvane
