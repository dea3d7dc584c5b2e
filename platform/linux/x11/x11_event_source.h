#pragma once

#include <glib.h>

#include <functional>
#include <memory>

#include "foundation/internal.h"
#include "platform/linux/x11/x11_connection.h"

namespace orvane {

/// Wakes GLib's default main context when the server has sent something, and never else. Also notices events
/// that came along with a reply and wait inside the connection, where the descriptor no longer tells of them.
/// Must not outlive the connection.
class X11EventSource {
  public:
    using Event = std::unique_ptr<xcb_generic_event_t, X11Free>;

    /// `onReady` is to fetch all events with `next` and to look whether the connection broke; it may destroy
    /// the event source.
    X11EventSource(X11Connection& connection, std::function<void()> onReady);
    ~X11EventSource();
    X11EventSource(const X11EventSource&) = delete;
    X11EventSource& operator=(const X11EventSource&) = delete;

    /// Null when there is none.
    Event next();

  private:
    static gboolean prepare(GSource* source, gint* timeout);
    static gboolean check(GSource* source);
    static gboolean dispatch(GSource* source, GSourceFunc callback, gpointer data);

    bool isReady();

    X11Connection& connection_;
    std::function<void()> onReady_;
    Event pending_;
    GSource* source_;
    gpointer descriptor_;
};

}  // namespace orvane
