#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/sway/sway_message.h"

namespace orvane {

/// An open connection to sway's IPC. Broken once sway has hung up or spoken what cannot be understood.
class SwayConnection {
  public:
    /// To the first of the sockets where somebody listens, without waiting; null when nobody does.
    static std::unique_ptr<SwayConnection> open();
    ~SwayConnection();
    SwayConnection(const SwayConnection&) = delete;
    SwayConnection& operator=(const SwayConnection&) = delete;

    int descriptor() const { return descriptor_; }
    bool isBroken() const { return isBroken_; }

    void send(const SwayMessage& message);
    /// Reads what has come, without waiting.
    void read();
    /// The next message read; none when there is none.
    std::optional<SwayMessage> next();
    bool hasNext() const { return !messages_.empty(); }
    /// Waits for a message and reads it. False when the time is over or the connection broken.
    bool waitForInput(std::chrono::steady_clock::time_point deadline);
    /// Asks and waits for the answer. Events that come before it are kept for `next`. None, and the
    /// connection broken, when no answer comes in time.
    std::optional<std::string> ask(SwayMessageType type, std::chrono::milliseconds limit);

  private:
    explicit SwayConnection(int descriptor) : descriptor_(descriptor) {}

    const int descriptor_;
    bool isBroken_ = false;
    SwayMessageReader reader_;
    std::deque<SwayMessage> messages_;
};

}  // namespace orvane
