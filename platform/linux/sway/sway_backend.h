#pragma once

#include <glib.h>

#include <memory>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"
#include "platform/linux/main_loop_timer.h"
#include "platform/linux/socket_retry.h"
#include "platform/linux/sway/sway_connection.h"
#include "platform/linux/sway/sway_tree.h"

namespace orvane {

/// The windows of sway, by its IPC: those on the visible workspaces, in the order in which they had the
/// focus. A sway that dies, hangs up or does not answer is tried again quietly until one answers, see
/// SocketRetry. Main thread only; no question waits longer than a quarter of a second.
class SwayBackend : public DesktopBackend {
  public:
    /// Connects, waiting up to a second for sway's answer; a later one arrives as onAvailabilityChanged.
    SwayBackend();
    ~SwayBackend() override;
    SwayBackend(const SwayBackend&) = delete;
    SwayBackend& operator=(const SwayBackend&) = delete;

    std::string name() const override { return "sway (IPC)"; }
    bool isAvailable() const override { return isReady_; }
    bool isDecided() const override { return (isReady_ || !connection_) && !noticeTimer_.isPending(); }
    std::optional<DesktopWindow> activeWindow() override;
    std::vector<DesktopWindow> windows() override;

  private:
    bool connect();
    void attempt();
    void readable();
    void takeMessages();
    void lose();
    void setTree(const std::string& answer);
    /// The number of the window that has the focus as far as is known; 0 for none.
    std::int64_t focused() const;
    const SwayTree* tree();
    void noticeSoon();
    void tellNow();

    std::unique_ptr<SwayConnection> connection_;
    guint source_ = 0;
    /// Sway has answered on this connection.
    bool isReady_ = false;
    /// As of the last event; none when it is to be asked for anew.
    std::optional<SwayTree> tree_;
    /// When sway told it, in microseconds on GLib's monotonic clock.
    std::int64_t toldAt_ = 0;
    SocketRetry retry_;
    MainLoopTimer answerTimer_;
    MainLoopTimer noticeTimer_;
};

}  // namespace orvane
