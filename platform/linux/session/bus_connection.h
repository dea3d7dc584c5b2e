#pragma once

#include <gio/gio.h>
#include <gio/gunixfdlist.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "foundation/internal.h"
#include "platform/linux/session/variant.h"

namespace orvane {

/// Something that goes on until the token is destroyed.
class BusToken {
  public:
    BusToken() = default;
    explicit BusToken(std::function<void()> end) : end_(std::move(end)) {}
    BusToken(BusToken&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
    BusToken& operator=(BusToken&& other) noexcept {
        std::swap(end_, other.end_);
        return *this;
    }
    ~BusToken() {
        if (end_) end_();
    }

  private:
    std::function<void()> end_;
};

/// An object on a bus and one of its interfaces.
struct BusObject {
    std::string service;
    std::string path;
    std::string interface;
};

/// An open connection to a message bus. Nothing but callNow waits; answers arrive on the main loop, and none
/// arrive once the connection object is destroyed. Main thread only.
class BusConnection {
  public:
    /// Values of the reply in a tuple, or null when the call failed. Descriptors in the reply are in the
    /// list, which may be null.
    using Reply = std::function<void(GVariant* values, GUnixFDList* descriptors)>;
    /// The object that sent the signal and its values in a tuple.
    using Signal = std::function<void(const std::string& path, GVariant* values)>;

    explicit BusConnection(GDBusConnection* connection);
    ~BusConnection();
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    static constexpr int usualTimeoutMilliseconds = 5000;

    /// Calls a method without starting its service. Takes `arguments` when floating; may be null.
    void call(const BusObject& object, const char* method, GVariant* arguments, Reply reply,
              int timeoutMilliseconds = usualTimeoutMilliseconds);
    /// The same, and waits for the values of the reply, so long at the most. Null when the call failed or no
    /// answer came; `isLate` is then set in the latter case.
    Variant callNow(const BusObject& object, const char* method, GVariant* arguments, int timeoutMilliseconds,
                    bool& isLate);
    /// This connection's own name on the bus.
    std::string ownName() const;
    /// Takes calls of one method with one text as its argument, and answers them with nothing.
    using Receiver = std::function<void(const std::string& sender, const std::string& text)>;
    [[nodiscard]] BusToken receive(const std::string& path, const std::string& interface,
                                   const std::string& method, Receiver receiver);
    /// Asks for a property of type boolean; none when there is no such one.
    void getBoolean(const BusObject& object, const char* property,
                    std::function<void(std::optional<bool>)> reply);

    /// Tells every such signal of the service's object. What is empty of the service, the path and the signal
    /// stands for all.
    [[nodiscard]] BusToken subscribe(const BusObject& object, const char* signal, Signal handler);
    /// Tells, soon and then on every change, whether somebody owns the name.
    [[nodiscard]] BusToken watchName(const std::string& name, std::function<void(bool isOwned)> handler);
    /// Tells when the bus went away.
    [[nodiscard]] BusToken watchClosed(std::function<void()> handler);

  private:
    GDBusConnection* connection_;
    GCancellable* cancellable_;
};

}  // namespace orvane
