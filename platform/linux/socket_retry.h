#pragma once

#include <gio/gio.h>

#include <functional>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/main_loop_timer.h"

namespace orvane {

/// Tries again and again to reach somebody who listens on a socket in a folder: soon after a file whose name
/// begins as the socket's does appears there, and otherwise after a quarter of a second at first and never
/// less often than every four seconds. Main thread only.
class SocketRetry {
  public:
    /// `attempt` is called on the main loop; each `start` leads to one call. It may start or stop this or
    /// destroy it.
    SocketRetry(std::string folder, std::string prefix, std::function<void()> attempt);
    ~SocketRetry();
    SocketRetry(const SocketRetry&) = delete;
    SocketRetry& operator=(const SocketRetry&) = delete;

    /// The next attempt comes later than the last one did.
    void start();
    /// No attempt any more, and the next start begins with short waits.
    void stop();

  private:
    void attempt();
    void watch();
    void endWatch();
    static void fileChanged(GFileMonitor* monitor, GFile* file, GFile* other, GFileMonitorEvent event,
                            gpointer self);

    const std::string folder_;
    const std::string prefix_;
    std::function<void()> attempt_;
    unsigned waitMilliseconds_;
    MainLoopTimer timer_;
    GFileMonitor* monitor_ = nullptr;
};

}  // namespace orvane
