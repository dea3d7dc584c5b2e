#include "platform/linux/wayland/wayland_event_source.h"

#include <cerrno>
#include <utility>

namespace orvane {

namespace {

struct Source {
    GSource base;
    WaylandEventSource* owner;
};

constexpr auto kInput = static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR);
constexpr auto kBoth = static_cast<GIOCondition>(kInput | G_IO_OUT);

}  // namespace

WaylandEventSource::WaylandEventSource(wl_display* display, std::function<void()> onReady)
    : display_(display), onReady_(std::move(onReady)) {
    static GSourceFuncs functions{&WaylandEventSource::prepare,
                                  &WaylandEventSource::check,
                                  &WaylandEventSource::dispatch,
                                  nullptr,
                                  nullptr,
                                  nullptr};
    source_ = g_source_new(&functions, sizeof(Source));
    reinterpret_cast<Source*>(source_)->owner = this;
    g_source_set_name(source_, "Orvane Wayland events");
    descriptor_ = g_source_add_unix_fd(source_, wl_display_get_fd(display), kInput);
    g_source_attach(source_, nullptr);
}

WaylandEventSource::~WaylandEventSource() {
    g_source_destroy(source_);
    g_source_unref(source_);
}

gboolean WaylandEventSource::prepare(GSource* source, gint* timeout) {
    auto* self = reinterpret_cast<Source*>(source)->owner;
    *timeout = -1;
    // A compositor that does not read is waited for; any other failure is seen when reading.
    const bool isFull = wl_display_flush(self->display_) < 0 && errno == EAGAIN;
    // Each change wakes the context, so that it would never sleep.
    if (std::exchange(self->waitsForRoom_, isFull) != isFull)
        g_source_modify_unix_fd(source, self->descriptor_, isFull ? kBoth : kInput);
    return FALSE;
}

gboolean WaylandEventSource::check(GSource* source) {
    auto* self = reinterpret_cast<Source*>(source)->owner;
    return (g_source_query_unix_fd(source, self->descriptor_) & kInput) != 0;
}

gboolean WaylandEventSource::dispatch(GSource* source, GSourceFunc, gpointer) {
    // Copied, since the call may end the event source.
    const auto onReady = reinterpret_cast<Source*>(source)->owner->onReady_;
    onReady();
    return G_SOURCE_CONTINUE;
}

}  // namespace orvane
