#pragma once

#include <glib.h>

#include <functional>
#include <utility>

#include "foundation/internal.h"

namespace orvane {

/// One action that is due once, later on GLib's default main context. Destroying the timer cancels it. Main
/// thread only.
class MainLoopTimer {
  public:
    MainLoopTimer() = default;
    ~MainLoopTimer() { cancel(); }
    MainLoopTimer(const MainLoopTimer&) = delete;
    MainLoopTimer& operator=(const MainLoopTimer&) = delete;

    /// Replaces what was pending. The action may restart or destroy the timer.
    void start(unsigned milliseconds, std::function<void()> action) {
        cancel();
        action_ = std::move(action);
        source_ = g_timeout_add(milliseconds, &MainLoopTimer::fire, this);
    }
    void cancel() {
        if (source_ != 0) g_source_remove(std::exchange(source_, 0));
        action_ = nullptr;
    }
    bool isPending() const { return source_ != 0; }

  private:
    static gboolean fire(gpointer self) {
        auto* timer = static_cast<MainLoopTimer*>(self);
        timer->source_ = 0;
        auto action = std::exchange(timer->action_, nullptr);
        action();
        return G_SOURCE_REMOVE;
    }

    guint source_ = 0;
    std::function<void()> action_;
};

}  // namespace orvane
