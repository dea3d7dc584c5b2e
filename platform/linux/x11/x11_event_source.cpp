#include "platform/linux/x11/x11_event_source.h"

#include <utility>

namespace orvane {

namespace {

struct Source {
    GSource base;
    X11EventSource* owner;
};

}  // namespace

X11EventSource::X11EventSource(X11Connection& connection, std::function<void()> onReady)
    : connection_(connection), onReady_(std::move(onReady)) {
    static GSourceFuncs functions{&X11EventSource::prepare,
                                  &X11EventSource::check,
                                  &X11EventSource::dispatch,
                                  nullptr,
                                  nullptr,
                                  nullptr};
    source_ = g_source_new(&functions, sizeof(Source));
    reinterpret_cast<Source*>(source_)->owner = this;
    g_source_set_name(source_, "Orvane X11 events");
    descriptor_ = g_source_add_unix_fd(source_, xcb_get_file_descriptor(connection.get()),
                                       static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR));
    g_source_attach(source_, nullptr);
}

X11EventSource::~X11EventSource() {
    g_source_destroy(source_);
    g_source_unref(source_);
}

X11EventSource::Event X11EventSource::next() {
    if (pending_) return std::move(pending_);
    return Event(xcb_poll_for_event(connection_.get()));
}

bool X11EventSource::isReady() {
    if (!pending_) pending_.reset(xcb_poll_for_queued_event(connection_.get()));
    return pending_ != nullptr || connection_.isBroken();
}

gboolean X11EventSource::prepare(GSource* source, gint* timeout) {
    auto* self = reinterpret_cast<Source*>(source)->owner;
    *timeout = -1;
    xcb_flush(self->connection_.get());
    return self->isReady();
}

gboolean X11EventSource::check(GSource* source) {
    auto* self = reinterpret_cast<Source*>(source)->owner;
    return g_source_query_unix_fd(source, self->descriptor_) != 0 || self->isReady();
}

gboolean X11EventSource::dispatch(GSource* source, GSourceFunc, gpointer) {
    // Copied, since the call may end the event source.
    const auto onReady = reinterpret_cast<Source*>(source)->owner->onReady_;
    onReady();
    return G_SOURCE_CONTINUE;
}

}  // namespace orvane
