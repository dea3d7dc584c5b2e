#pragma once

#include <string>
#include <vector>

#include "foundation/internal.h"

namespace orvane {

// Where compositors of this user listen. All of it is read anew at each call, since a compositor that was
// started again may listen elsewhere than the environment says.

/// $XDG_RUNTIME_DIR; empty when it is not set.
std::string runtimeFolder();

/// Sockets of Wayland compositors, the likeliest first: what $WAYLAND_DISPLAY says, then the others of the
/// runtime folder. None in an X11 session, where $DISPLAY alone is set: a compositor that is there as well
/// serves another session.
std::vector<std::string> waylandSockets();
/// Sockets of sway's IPC: what $SWAYSOCK says, then the others of the runtime folder, the newest first. None
/// in an X11 session.
std::vector<std::string> swaySockets();

/// Connects to a socket without waiting; the descriptor does not block. Negative when nobody listens there.
int connectToSocket(const std::string& path);

}  // namespace orvane
