#pragma once

#include <glib.h>
#include <wayland-client.h>

#include <functional>

#include "foundation/internal.h"

namespace orvane {

/// Wakes GLib's default main context when the compositor has sent something, and never else. Requests that
/// wait are sent before the context sleeps. Must not outlive the connection.
class WaylandEventSource {
  public:
    /// `onReady` is to read and dispatch what came and to look whether the connection broke; it may destroy
    /// the event source.
    WaylandEventSource(wl_display* display, std::function<void()> onReady);
    ~WaylandEventSource();
    WaylandEventSource(const WaylandEventSource&) = delete;
    WaylandEventSource& operator=(const WaylandEventSource&) = delete;

  private:
    static gboolean prepare(GSource* source, gint* timeout);
    static gboolean check(GSource* source);
    static gboolean dispatch(GSource* source, GSourceFunc callback, gpointer data);

    wl_display* display_;
    std::function<void()> onReady_;
    GSource* source_;
    gpointer descriptor_;
    /// The compositor has not read what was sent before.
    bool waitsForRoom_ = false;
};

}  // namespace orvane
