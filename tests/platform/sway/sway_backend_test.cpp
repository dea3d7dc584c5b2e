#include "platform/linux/sway/sway_backend.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <thread>

#include "tests/platform/main_loop_wait.h"

namespace orvane {
namespace {

/// Takes one connection after another and answers each question with the same bytes, on a thread of its own.
class FakeSway {
  public:
    explicit FakeSway(const std::string& path) : path_(path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(listener_, 4), 0);
        thread_ = std::thread([this] { serve(); });
    }
    ~FakeSway() {
        ends_ = true;
        shutdown(listener_, SHUT_RDWR);
        shutdown(connection_, SHUT_RDWR);
        thread_.join();
        close(listener_);
        std::filesystem::remove(path_);
    }

    /// An event; empty bytes hang up.
    void send(const std::string& bytes) {
        if (bytes.empty()) shutdown(connection_, SHUT_RDWR);
        EXPECT_GE(::send(connection_, bytes.data(), bytes.size(), MSG_NOSIGNAL), bytes.empty() ? -1 : 0);
    }
    int connections() const { return connections_; }

    /// What is answered to a question for the tree; nothing when empty.
    std::atomic<const char*> tree = R"({"type":"root","nodes":[]})";
    /// A window event that follows the next answer about the tree at once; none when null.
    std::atomic<const char*> eventAfterTree = nullptr;

  private:
    void serve() {
        while (!ends_) {
            const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
            if (connection < 0) break;
            connection_ = connection;
            ++connections_;
            SwayMessageReader reader;
            char buffer[4096];
            for (ssize_t size = 0; (size = recv(connection, buffer, sizeof buffer, 0)) > 0;) {
                reader.append({buffer, static_cast<std::size_t>(size)});
                while (const auto question = reader.next()) answer(question->type);
            }
            close(connection);
        }
    }
    void answer(SwayMessageType type) {
        const bool asksTree = type == SwayMessageType::getTree;
        const std::string text = asksTree ? tree.load() : R"({"success":true})";
        if (text.empty()) return;
        const char* event = asksTree ? eventAfterTree.exchange(nullptr) : nullptr;
        send(SwayMessage{type, text}.bytes() +
             (event != nullptr ? SwayMessage{SwayMessageType::windowEvent, event}.bytes() : ""));
    }

    const std::string path_;
    int listener_ = -1;
    std::atomic<int> connection_ = -1;
    std::atomic<int> connections_ = 0;
    std::atomic<bool> ends_ = false;
    std::thread thread_;
};

class SwayBackendTest : public ::testing::Test {
  protected:
    SwayBackendTest() {
        std::string pattern = "/tmp/orvane-sway-XXXXXX";
        folder_ = mkdtemp(pattern.data());
        setenv("XDG_RUNTIME_DIR", folder_.c_str(), 1);
        unsetenv("DISPLAY");
        unsetenv("WAYLAND_DISPLAY");
        unsetenv("SWAYSOCK");
    }
    ~SwayBackendTest() override { std::filesystem::remove_all(folder_); }

    std::unique_ptr<FakeSway> sway() { return std::make_unique<FakeSway>(folder_ + "/sway-ipc.1.2.sock"); }
    static ::testing::AssertionResult becomesAvailable(const SwayBackend& backend, bool available) {
        return waitUntil([&] { return backend.isAvailable() == available; })
                   ? ::testing::AssertionSuccess()
                   : ::testing::AssertionFailure() << "available: " << !available;
    }

    std::string folder_;
};

constexpr const char* kOneWindow =
    R"({"type":"root","nodes":[{"id":5,"pid":7,"name":"One","app_id":"foot","visible":true,"focused":true}]})";

TEST_F(SwayBackendTest, EventsAreReasonsToLook) {
    const auto sway = this->sway();
    SwayBackend backend;
    ASSERT_TRUE(backend.isAvailable());
    EXPECT_FALSE(backend.activeWindow());
    int notices = 0;
    backend.onActiveWindowChanged = [&] { ++notices; };
    sway->tree = kOneWindow;
    sway->send(SwayMessage{SwayMessageType::windowEvent, R"({"change":"focus"})"}.bytes());
    EXPECT_TRUE(waitUntil([&] { return notices == 1; }));
    EXPECT_EQ(backend.activeWindow()->title, "One");
    EXPECT_EQ(backend.windows().size(), 1U);
    // Nobody is told of another window when it is the same one; its new title is seen.
    sway->tree = R"({"type":"root","nodes":[{"id":5,"pid":7,"name":"Two","visible":true,"focused":true}]})";
    sway->send(SwayMessage{SwayMessageType::windowEvent, R"({"change":"title"})"}.bytes());
    sway->send(SwayMessage{SwayMessageType::workspaceEvent, "what?"}.bytes());
    EXPECT_TRUE(waitUntil([&] { return backend.activeWindow()->title == "Two"; }));
    runWhatIsDue();
    EXPECT_EQ(notices, 1);
}

TEST_F(SwayBackendTest, AnEventThatComesWithAnAnswerIsNotLeftLying) {
    const auto sway = this->sway();
    SwayBackend backend;
    ASSERT_TRUE(backend.isAvailable());
    int notices = 0;
    backend.onActiveWindowChanged = [&] { ++notices; };
    sway->tree = kOneWindow;
    sway->eventAfterTree = R"({"change":"focus"})";
    // A title alone is no reason to look; whoever asks for the windows gets answer and event at once.
    sway->send(SwayMessage{SwayMessageType::windowEvent, R"({"change":"title"})"}.bytes());
    EXPECT_TRUE(waitUntil([&] { return !backend.windows().empty(); }));
    EXPECT_TRUE(waitUntil([&] { return notices == 1; }));
    EXPECT_EQ(sway->eventAfterTree, nullptr);
}

TEST_F(SwayBackendTest, ALockerTakesTheFocusWithoutAnEvent) {
    const auto sway = this->sway();
    sway->tree = kOneWindow;
    SwayBackend backend;
    ASSERT_TRUE(backend.activeWindow());
    int notices = 0;
    backend.onActiveWindowChanged = [&] { ++notices; };
    sway->tree = R"({"type":"root","nodes":[]})";
    EXPECT_TRUE(waitUntil([&] { return !backend.activeWindow(); }));
    EXPECT_TRUE(waitUntil([&] { return notices == 1; }));

    // The window that has the focus again is told even when nobody looked meanwhile.
    for (int expected = 2; expected < 4; ++expected) {
        sway->tree = kOneWindow;
        sway->send(SwayMessage{SwayMessageType::windowEvent, R"({"change":"focus"})"}.bytes());
        EXPECT_TRUE(waitUntil([&] { return notices == expected; }));
    }
    EXPECT_EQ(backend.activeWindow()->number, 5);
}

TEST_F(SwayBackendTest, WhatSpeaksAnotherLanguageIsLeftAndTriedAgain) {
    auto sway = this->sway();
    SwayBackend backend;
    ASSERT_TRUE(backend.isAvailable());
    std::string told;
    backend.onAvailabilityChanged = [&](bool available) { told += available ? '+' : '-'; };
    std::string length = SwayMessage{SwayMessageType::windowEvent, ""}.bytes();
    length.replace(6, 4, "\xff\xff\xff\xff");
    for (const std::string& bytes : {std::string("HTTP/1.1 400 Bad Request"), length, std::string()}) {
        const int former = sway->connections();
        sway->send(bytes);
        EXPECT_TRUE(waitUntil([&] { return sway->connections() > former; }));
        EXPECT_TRUE(becomesAvailable(backend, true));
        runWhatIsDue();
    }
    EXPECT_EQ(told, "-+-+-+");
    sway.reset();
    EXPECT_TRUE(becomesAvailable(backend, false));
    EXPECT_FALSE(backend.activeWindow());
    sway = this->sway();
    EXPECT_TRUE(becomesAvailable(backend, true));
}

TEST_F(SwayBackendTest, OneThatFallsSilentIsNotWaitedForTwice) {
    const auto sway = this->sway();
    SwayBackend backend;
    ASSERT_TRUE(backend.isAvailable());
    sway->tree = "";
    sway->send(SwayMessage{SwayMessageType::windowEvent, R"({"change":"title"})"}.bytes());
    EXPECT_TRUE(waitUntil([&] { return !backend.activeWindow() && !backend.isAvailable(); }));
    const auto began = std::chrono::steady_clock::now();
    for (int i = 0; i < 100; ++i) EXPECT_TRUE(backend.windows().empty());
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(2));
    sway->tree = kOneWindow;
    EXPECT_TRUE(waitUntil([&] { return backend.activeWindow().has_value(); }, 30));
}

}  // namespace
}  // namespace orvane
