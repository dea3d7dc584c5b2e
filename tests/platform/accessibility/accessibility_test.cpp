#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>

#include "platform/linux/accessibility/accessibility_backend.h"
#include "platform/linux/accessibility/atspi_accessibility.h"
#include "platform/linux/accessibility/title_reader.h"
#include "tests/platform/accessibility/private_accessibility.h"
#include "tests/platform/main_loop_wait.h"
#include "tests/platform/x11/private_display.h"

namespace orvane {
namespace {

constexpr double kLongestWait = 60;

/// A connection of a reader's own that notes whom it calls.
class WatchedConnection {
  public:
    explicit WatchedConnection(GDBusConnection* connection) : bus_(connection) {
        const auto note = +[](GDBusConnection*, GDBusMessage* message, gboolean isIncoming, gpointer notes) {
            const bool isCall = g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL;
            if (isIncoming == 0 && isCall)
                (*static_cast<std::shared_ptr<Notes>*>(notes))->add(g_dbus_message_get_destination(message));
            return message;
        };
        // On GLib's thread, where a message may still be on its way when this is destroyed.
        g_dbus_connection_add_filter(
            connection, note, new std::shared_ptr<Notes>(notes_),
            [](gpointer notes) { delete static_cast<std::shared_ptr<Notes>*>(notes); });
        g_object_unref(connection);
    }

    BusConnection& bus() { return bus_; }
    /// How many calls each service got since the last time.
    std::map<std::string, int> takeCalls() {
        const std::lock_guard lock(notes_->mutex);
        return std::exchange(notes_->calls, {});
    }

  private:
    struct Notes {
        void add(const char* destination) {
            const std::lock_guard lock(mutex);
            ++calls[destination];
        }
        std::mutex mutex;
        std::map<std::string, int> calls;
    };

    std::shared_ptr<Notes> notes_ = std::make_shared<Notes>();
    BusConnection bus_;
};

/// Real programs with real windows that offer themselves to assistive programs.
class AccessibilityTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (PrivateAccessibility::registryProgram().empty()) {
            GTEST_SKIP() << "left out: at-spi2-registryd is not installed";
        }
        for (const char* program : {"Xvfb", "openbox", "xdotool"}) {
            char* path = g_find_program_in_path(program);
            if (path == nullptr) GTEST_SKIP() << "left out: " << program << " is not installed";
            g_free(path);
        }
        session_.start();
        offered_ = std::make_unique<PrivateAccessibility>(session_);
        display_ = std::make_unique<PrivateDisplay>();
        display_->startWindowManager();
        sharedBus_ = std::make_unique<SharedBus>(session_.address());
        bus_ = std::make_unique<AccessibilityBus>(*sharedBus_);
        accessibility_ = std::make_unique<AtspiAccessibility>(*bus_);
        sharedBus_->open();
        ASSERT_TRUE(waitUntil([this] { return accessibility_->isProcessTrusted(); }, kLongestWait));
    }

    /// A program whose window is the active one.
    std::unique_ptr<ChildProcess> open(const std::string& title) {
        auto program = std::make_unique<ChildProcess>(
            std::vector<std::string>{"/usr/bin/python3", ORVANE_SOURCE_DIR "/tests/desktops/window.py",
                                     title},
            std::map<std::string, std::string>{{"DISPLAY", display_->name()},
                                               {"GDK_BACKEND", "x11"},
                                               {"GSETTINGS_BACKEND", "memory"},
                                               {"DBUS_SESSION_BUS_ADDRESS", session_.address()},
                                               {"AT_SPI_BUS_ADDRESS", offered_->address()}});
        const auto answer = program->readLine();
        EXPECT_TRUE(answer.starts_with("shown "));
        ChildProcess::run({"xdotool", "windowactivate", answer.substr(answer.find(' ') + 1)},
                          {{"DISPLAY", display_->name()}});
        EXPECT_TRUE(titleBecomes(*program, title));
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
    std::unique_ptr<PrivateDisplay> display_;
    std::unique_ptr<SharedBus> sharedBus_;
    std::unique_ptr<AccessibilityBus> bus_;
    std::unique_ptr<AtspiAccessibility> accessibility_;
};

TEST_F(AccessibilityTest, TheTitleOfAProcesssFocusedWindow) {
    const auto first = open("First");
    first->writeLine("title Erste – größer");
    EXPECT_TRUE(titleBecomes(*first, "Erste – größer"));
    const auto second = open("Second");
    EXPECT_TRUE(titleBecomes(*first, "none"));
    EXPECT_EQ(title(getpid()), "none");
    second->kill();
    EXPECT_TRUE(titleBecomes(*first, "Erste – größer"));
    EXPECT_FALSE(offered_->wasSwitched());

    // Elements may be kept, and the bus may go.
    const auto kept = accessibility_->createApplication(first->identifier());
    offered_.reset();
    EXPECT_TRUE(waitUntil([this] { return !accessibility_->isProcessTrusted(); }, kLongestWait));
    accessibility_.reset();
    AccessibilityValue focused;
    EXPECT_NE(kept->copyAttributeValue(NSAccessibilityFocusedWindowAttribute, focused), 0);
}

TEST_F(AccessibilityTest, ARegistryThatWasSlowIsAskedAgain) {
    GDBusConnection* mutter = session_.connect();
    g_dbus_connection_set_exit_on_close(mutter, FALSE);
    g_bus_own_name_on_connection(mutter, "org.gnome.Mutter.IdleMonitor", G_BUS_NAME_OWNER_FLAGS_NONE, nullptr,
                                 nullptr, nullptr, nullptr);
    offered_->registry().stop();
    {
        SharedBus sessionBus(session_.address());
        AccessibilityBus accessibilityBus(sessionBus);
        AccessibilityBackend backend(sessionBus, accessibilityBus);
        sessionBus.open();
        EXPECT_TRUE(waitUntil([&] { return backend.isDecided(); }, kLongestWait));
        EXPECT_FALSE(backend.isAvailable());
        // Nothing happens on the screen meanwhile.
        offered_->registry().resume();
        EXPECT_TRUE(waitUntil([&] { return backend.isAvailable(); }, kLongestWait));
    }
    g_dbus_connection_close_sync(mutter, nullptr, nullptr);
    g_object_unref(mutter);
}

TEST_F(AccessibilityTest, AnApplicationThatHangsIsGivenUp) {
    const auto hanging = open("Hanging");
    const auto other = open("Other");
    hanging->stop();

    const auto longestWait = [&](std::int32_t process) {
        // On a busy machine a thread may lie idle for longer than any deadline, but not every time.
        gint64 shortest = G_MAXINT64;
        for (int attempt = 0; attempt < 20; ++attempt) {
            WatchedConnection connection(offered_->connect());
            TitleReader reader;
            reader.busOpened(connection.bus());
            const auto started = g_get_monotonic_time();
            EXPECT_FALSE(reader.focusedWindow(process));
            shortest = std::min(shortest, g_get_monotonic_time() - started);
            // GLib's thread sends the question, perhaps only now.
            EXPECT_TRUE(waitUntil([&] { return !connection.takeCalls().empty(); }, kLongestWait));

            // Who was late is left in peace for a while.
            EXPECT_FALSE(reader.focusedWindow(process));
            EXPECT_TRUE(connection.takeCalls().empty());
        }
        return shortest;
    };
    constexpr gint64 mostMicroseconds = 50'000;
    EXPECT_LT(longestWait(hanging->identifier()), mostMicroseconds);

    // Who is not asked for gets no question, so who hangs delays no other.
    WatchedConnection connection(offered_->connect());
    TitleReader reader;
    reader.busOpened(connection.bus());
    std::map<std::string, int> calls;
    const auto isRead = [&] {
        connection.takeCalls();
        const auto window = reader.focusedWindow(other->identifier());
        calls = connection.takeCalls();
        return window && window->title == "Other";
    };
    EXPECT_TRUE(waitUntil(isRead, kLongestWait));
    EXPECT_EQ(calls.erase("org.a11y.atspi.Registry"), 1U);
    calls.erase("org.freedesktop.DBus");
    EXPECT_EQ(calls.size(), 1U) << testing::PrintToString(calls);

    offered_->registry().stop();
    EXPECT_LT(longestWait(other->identifier()), mostMicroseconds);
    offered_->registry().resume();

    hanging->resume();
    other->kill();
    EXPECT_TRUE(titleBecomes(*hanging, "Hanging"));
}

}  // namespace
}  // namespace orvane
