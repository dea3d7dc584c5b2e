#pragma once

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/main_loop_timer.h"
#include "platform/linux/session/bus_connection.h"

namespace orvane {

/// Keeps a connection to a message bus: opens it, and opens it again when it was lost or there was no bus
/// yet, after one second at first and once a minute at last. The connection is the link's own, so that the
/// host's settings for its shared one stay as they are. Main thread only.
class BusLink {
  public:
    /// Where the user's or the machine's bus is; empty when nothing says so. No bus is ever started.
    static std::string sessionBusAddress();
    static std::string systemBusAddress();

    /// With an empty address there never is a bus.
    explicit BusLink(std::string address);
    ~BusLink();
    BusLink(const BusLink&) = delete;
    BusLink& operator=(const BusLink&) = delete;

    /// Set both before `open`. A connection is valid from onOpened until onClosed returns.
    std::function<void(BusConnection&)> onOpened;
    std::function<void()> onClosed;

    void open();
    bool isOpen() const { return connection_ != nullptr; }
    /// The first attempt has ended, either way.
    bool isDecided() const { return isDecided_; }
    /// Why there is no connection; empty while there is one.
    const std::string& problem() const { return problem_; }

  private:
    static void finish(GObject* source, GAsyncResult* result, gpointer self);

    void opened(GDBusConnection* connection);
    void closed();
    void openLater();

    const std::string address_;
    GCancellable* cancellable_;
    std::unique_ptr<BusConnection> connection_;
    BusToken closedWatch_;
    bool isDecided_ = false;
    std::string problem_;
    unsigned retryMilliseconds_;
    MainLoopTimer retryTimer_;
};

}  // namespace orvane
