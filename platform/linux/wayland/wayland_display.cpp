#include "platform/linux/wayland/wayland_display.h"

#include <poll.h>

#include <cerrno>

#include "platform/linux/compositor_sockets.h"

namespace orvane {

namespace {

constexpr std::chrono::milliseconds kFirstWait{1000};
// One that took the connection and says nothing is tried again: by now another may listen in its place.
constexpr unsigned kAnswerMilliseconds = 10'000;
// The first answer tells that all globals were announced; the second, that the first events of those that
// were bound have arrived.
constexpr int kSyncs = 2;

}  // namespace

const wl_registry_listener WaylandDisplay::kRegistryListener{&WaylandDisplay::global,
                                                             &WaylandDisplay::globalRemove};
const wl_callback_listener WaylandDisplay::kSyncListener{&WaylandDisplay::syncDone};

WaylandDisplay::WaylandDisplay() : retry_(runtimeFolder(), "wayland-", [this] { attempt(); }) {}

WaylandDisplay::~WaylandDisplay() { close(); }

void WaylandDisplay::start() {
    if (!connect() || (!waitUntilReady(kFirstWait) && !display_)) retry_.start();
}

void WaylandDisplay::attempt() {
    if (!display_ && !connect()) retry_.start();
}

bool WaylandDisplay::connect() {
    for (const auto& path : waylandSockets()) {
        const int descriptor = connectToSocket(path);
        if (descriptor < 0) continue;
        // Not by name: that would take the connection that a parent may have left to the host's own toolkit.
        display_.reset(wl_display_connect_to_fd(descriptor));
        if (!display_) continue;
        socketPath_ = path;
        events_ = std::make_unique<WaylandEventSource>(display_.get(), [this] { readEvents(); });
        registry_.reset(wl_display_get_registry(display_.get()));
        wl_registry_add_listener(registry_.get(), &kRegistryListener, this);
        askForSync();
        answerTimer_.start(kAnswerMilliseconds, [this] { lose(); });
        return true;
    }
    return false;
}

void WaylandDisplay::askForSync() {
    sync_.reset(wl_display_sync(display_.get()));
    wl_callback_add_listener(sync_.get(), &kSyncListener, this);
}

bool WaylandDisplay::waitUntilReady(std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!isReady_) {
        const bool isFull = wl_display_flush(display_.get()) < 0 && errno == EAGAIN;
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) return false;
        pollfd ready{wl_display_get_fd(display_.get()),
                     static_cast<short>(isFull ? POLLIN | POLLOUT : POLLIN), 0};
        if (poll(&ready, 1, static_cast<int>(left.count())) < 0 && errno != EINTR) return false;
        if ((ready.revents & ~POLLOUT) != 0 && !readAndDispatch()) {
            for (auto* listener : listeners_) listener->compositorLost();
            close();
            return false;
        }
    }
    return true;
}

bool WaylandDisplay::readAndDispatch() {
    while (wl_display_prepare_read(display_.get()) != 0) {
        if (wl_display_dispatch_pending(display_.get()) < 0) return false;
    }
    return wl_display_read_events(display_.get()) == 0 && wl_display_dispatch_pending(display_.get()) >= 0;
}

void WaylandDisplay::readEvents() {
    const bool answered = isReady_;
    if (!readAndDispatch()) {
        lose();
    } else if (!answered && isReady_ && onAnswersChanged) {
        onAnswersChanged(true);
    }
}

void WaylandDisplay::lose() {
    isReady_ = false;
    for (auto* listener : listeners_) listener->compositorLost();
    close();
    retry_.start();
    if (onAnswersChanged) onAnswersChanged(false);
}

void WaylandDisplay::close() {
    answerTimer_.cancel();
    events_.reset();
    sync_.reset();
    registry_.reset();
    display_.reset();
    answeredSyncs_ = 0;
    isReady_ = false;
}

void WaylandDisplay::global(void* self, wl_registry*, std::uint32_t name, const char* interface,
                            std::uint32_t version) {
    const WaylandGlobal added{name, interface, version};
    for (auto* listener : static_cast<WaylandDisplay*>(self)->listeners_) listener->globalAdded(added);
}

void WaylandDisplay::globalRemove(void* self, wl_registry*, std::uint32_t name) {
    for (auto* listener : static_cast<WaylandDisplay*>(self)->listeners_) listener->globalRemoved(name);
}

void WaylandDisplay::syncDone(void* self, wl_callback*, std::uint32_t) {
    auto& display = *static_cast<WaylandDisplay*>(self);
    if (++display.answeredSyncs_ < kSyncs) {
        display.askForSync();
        return;
    }
    display.sync_.reset();
    display.answerTimer_.cancel();
    display.retry_.stop();
    display.isReady_ = true;
    for (auto* listener : display.listeners_) listener->compositorReady();
}

}  // namespace orvane
