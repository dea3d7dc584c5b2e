#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/socket_retry.h"
#include "platform/linux/wayland/wayland_event_source.h"
#include "platform/linux/wayland/wayland_handle.h"
#include "platform/linux/wayland/wayland_listener.h"

namespace orvane {

/// The connection to a Wayland compositor. A compositor that dies, hangs up or does not answer is a state and
/// no error; the connection is made again as soon as one answers, see SocketRetry. Main thread only.
class WaylandDisplay {
  public:
    WaylandDisplay();
    ~WaylandDisplay();
    WaylandDisplay(const WaylandDisplay&) = delete;
    WaylandDisplay& operator=(const WaylandDisplay&) = delete;

    /// Set before `start`. A compositor answers now, or one that did or might have answered is gone. Called
    /// on the main loop after the listeners were told, never from within `start`.
    std::function<void(bool answers)> onAnswersChanged;

    /// Listeners are added before `start`. They, and what they bound, are destroyed right before the display,
    /// without a turn of the main loop in between; it does not tell them of its end.
    void add(WaylandListener& listener) { listeners_.push_back(&listener); }

    /// Connects, waiting up to a second for the compositor's answer; a later one arrives on the main loop.
    void start();

    /// A compositor has answered and its connection holds.
    bool answers() const { return isReady_; }
    /// A compositor has answered, or none took the connection.
    bool isDecided() const { return isReady_ || !display_; }
    /// Where it listens; empty when none answers.
    std::string socketPath() const { return isReady_ ? socketPath_ : std::string(); }

    /// Binds what a listener was told of, in that version or the newest one offered when it is older.
    template <typename Proxy>
    Proxy* bind(const WaylandGlobal& global, const wl_interface& interface, std::uint32_t version) {
        return static_cast<Proxy*>(
            wl_registry_bind(registry_.get(), global.name, &interface, std::min(version, global.version)));
    }

  private:
    struct Disconnect {
        void operator()(wl_display* display) const { wl_display_disconnect(display); }
    };

    bool connect();
    void attempt();
    bool waitUntilReady(std::chrono::milliseconds limit);
    void readEvents();
    bool readAndDispatch();
    void askForSync();
    void lose();
    void close();

    static void global(void* self, wl_registry* registry, std::uint32_t name, const char* interface,
                       std::uint32_t version);
    static void globalRemove(void* self, wl_registry* registry, std::uint32_t name);
    static void syncDone(void* self, wl_callback* callback, std::uint32_t serial);

    static const wl_registry_listener kRegistryListener;
    static const wl_callback_listener kSyncListener;

    std::vector<WaylandListener*> listeners_;
    std::string socketPath_;
    std::unique_ptr<wl_display, Disconnect> display_;
    WaylandHandle<wl_registry> registry_;
    WaylandHandle<wl_callback> sync_;
    std::unique_ptr<WaylandEventSource> events_;
    int answeredSyncs_ = 0;
    bool isReady_ = false;
    SocketRetry retry_;
    MainLoopTimer answerTimer_;
};

}  // namespace orvane
