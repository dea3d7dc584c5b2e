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

/// Whether GLib's default main context soon falls asleep, for a tenth of a second or longer unless something
/// comes. It does not where something wakes it again and again, also when then nothing is done.
inline bool comesToRest() {
    static GPollFunc realPoll;
    static bool isAtRest;
    constexpr int mostWakeUps = 1000;
    constexpr gint restMilliseconds = 100;
    realPoll = g_main_context_get_poll_func(nullptr);
    isAtRest = false;
    g_main_context_set_poll_func(nullptr, [](GPollFD* descriptors, guint count, gint timeout) {
        const gint ready = realPoll(descriptors, count, 0);
        if (ready != 0) return ready;
        isAtRest = timeout < 0 || timeout >= restMilliseconds;
        return isAtRest ? 0 : realPoll(descriptors, count, timeout);
    });
    for (int i = 0; i < mostWakeUps && !isAtRest; ++i) g_main_context_iteration(nullptr, TRUE);
    g_main_context_set_poll_func(nullptr, realPoll);
    return isAtRest;
}

}  // namespace orvane
