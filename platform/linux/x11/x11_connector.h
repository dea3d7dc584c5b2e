#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/x11/x11_connection.h"

namespace orvane {

/// Opens connections on a thread of its own, since a server that hangs keeps its caller waiting. Main thread
/// only.
class X11Connector {
  public:
    using Handler = std::function<void(std::unique_ptr<X11Connection>)>;

    explicit X11Connector(std::string display);
    /// An attempt that is under way ends unheard.
    ~X11Connector();
    X11Connector(const X11Connector&) = delete;
    X11Connector& operator=(const X11Connector&) = delete;

    /// Tries once, and tells the outcome later on the main loop: a connection, or null. One attempt at a
    /// time.
    void connect(Handler handler);
    /// Waits for the attempt under way, but not longer than that. Returns whether it has ended; its outcome
    /// is then in `connection` and the handler is not called.
    bool wait(std::chrono::milliseconds limit, std::unique_ptr<X11Connection>& connection);

  private:
    struct Attempt;

    static void end(Attempt& attempt, std::unique_ptr<X11Connection> connection);
    static int tell(void* data);
    static void release(void* data);

    std::string display_;
    std::shared_ptr<Attempt> attempt_;
};

}  // namespace orvane
