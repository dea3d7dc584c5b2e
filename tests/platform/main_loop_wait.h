#pragma once

#include <glib.h>

#include <functional>

namespace orvane {

/// Runs GLib's default main context until the condition holds, or gives up after `seconds`. The condition is
/// looked at again whenever something happens and every few milliseconds.
inline bool waitUntil(const std::function<bool()>& condition, double seconds = 15) {
    const gint64 deadline = g_get_monotonic_time() + static_cast<gint64>(seconds * G_USEC_PER_SEC);
    const guint look = g_timeout_add(
        10, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    bool holds = condition();
    while (!holds && g_get_monotonic_time() < deadline) {
        g_main_context_iteration(nullptr, TRUE);
        holds = condition();
    }
    g_source_remove(look);
    return holds;
}

/// Runs everything on the main context that is due already.
inline void runWhatIsDue() {
    while (g_main_context_iteration(nullptr, FALSE) != 0) {
    }
}

}  // namespace orvane
