#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/internal.h"

namespace orvane {

/// Types of messages of sway's IPC, as sway-ipc(7) numbers them.
enum class SwayMessageType : std::uint32_t {
    runCommand = 0,
    subscribe = 2,
    getTree = 4,
    workspaceEvent = 0x80000000,
    windowEvent = 0x80000003,
    shutdownEvent = 0x80000006,
};

/// A message in either direction; the payload is JSON where sway sends it.
struct SwayMessage {
    SwayMessageType type;
    std::string payload;

    /// As it goes over the socket.
    std::string bytes() const;
};

/// Takes the bytes that sway sends and cuts messages from them. Whatever the bytes are, no more than the
/// longest message is kept of them.
class SwayMessageReader {
  public:
    void append(std::string_view bytes) { pending_ += bytes; }
    /// The next whole message; none when there is none yet or the stream is broken.
    std::optional<SwayMessage> next();
    /// What came is not sway's language; nothing that follows can be understood.
    bool isBroken() const { return isBroken_; }

  private:
    std::string pending_;
    bool isBroken_ = false;
};

}  // namespace orvane
