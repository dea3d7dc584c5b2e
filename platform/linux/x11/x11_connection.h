#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "foundation/internal.h"
#include "platform/linux/x11/x11_atoms.h"

namespace orvane {

struct X11Free {
    void operator()(void* memory) const { std::free(memory); }
};

/// An open connection to an X server, with everything that is asked once already answered, so that later use
/// never waits without a limit.
class X11Connection {
  public:
    /// Blocks until the server has answered; callable on any thread. None when no server answers.
    static std::unique_ptr<X11Connection> open(const std::string& display);
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    xcb_connection_t* get() const { return connection_; }
    xcb_window_t root() const { return root_; }
    const X11Atoms& atoms() const { return atoms_; }
    /// Whether the server tells the processes of its clients (X-Resource 1.2).
    bool hasClientIdentifiers() const { return hasClientIdentifiers_; }
    /// Number of the screen saver's event; none when the server has no such extension.
    std::optional<std::uint8_t> screenSaverEvent() const { return screenSaverEvent_; }
    /// Whether the server can switch monitors off.
    bool hasScreenPower() const { return hasScreenPower_; }

    /// The server is gone; the connection answers nothing any more.
    bool isBroken() const { return xcb_connection_has_error(connection_) != 0; }
    /// The reply to a request, waiting up to half a second for it; null for an error, a broken connection, or
    /// a server that does not answer. The caller frees it.
    void* waitForReply(unsigned int sequence);
    /// Tells that the server has spoken: after it failed to answer in time, no reply is waited for until
    /// then.
    void serverSpoke() { isStalled_ = false; }

  private:
    X11Connection(xcb_connection_t* connection, xcb_window_t root);

    xcb_connection_t* connection_;
    xcb_window_t root_;
    X11Atoms atoms_;
    bool hasClientIdentifiers_ = false;
    std::optional<std::uint8_t> screenSaverEvent_;
    bool hasScreenPower_ = false;
    bool isStalled_ = false;
};

/// A request that was sent and whose reply is still to come. Sending many before the first `get` makes them
/// cost one round trip together. Must not outlive the connection.
template <typename Reply>
class X11Request {
  public:
    using Pointer = std::unique_ptr<Reply, X11Free>;

    template <typename Cookie>
    X11Request(X11Connection& connection, Cookie cookie)
        : connection_(&connection), sequence_(cookie.sequence) {}
    X11Request(X11Request&& other) noexcept
        : connection_(std::exchange(other.connection_, nullptr)), sequence_(other.sequence_) {}
    X11Request& operator=(X11Request&&) = delete;
    ~X11Request() {
        if (connection_ != nullptr) xcb_discard_reply(connection_->get(), sequence_);
    }

    /// Once only. Null for an error, such as a window that is gone.
    Pointer get() {
        auto* connection = std::exchange(connection_, nullptr);
        return Pointer(static_cast<Reply*>(connection->waitForReply(sequence_)));
    }

  private:
    X11Connection* connection_;
    unsigned int sequence_;
};

}  // namespace orvane
