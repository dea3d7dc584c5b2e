#include "platform/linux/wayland/ext_idle_source.h"

namespace orvane {

template <>
struct WaylandRelease<ext_idle_notification_v1> {
    void operator()(ext_idle_notification_v1* proxy) const { ext_idle_notification_v1_destroy(proxy); }
};

namespace {

constexpr std::uint32_t kVersion = EXT_IDLE_NOTIFIER_V1_GET_INPUT_IDLE_NOTIFICATION_SINCE_VERSION;

class Notification : public WaylandSeatIdle {
  public:
    explicit Notification(ext_idle_notification_v1* notification) : notification_(notification) {
        static constexpr ext_idle_notification_v1_listener listener{
            [](void* self, ext_idle_notification_v1*) { static_cast<Notification*>(self)->becameIdle(); },
            [](void* self, ext_idle_notification_v1*) { static_cast<Notification*>(self)->resumed(); }};
        ext_idle_notification_v1_add_listener(notification, &listener, this);
    }

  private:
    WaylandHandle<ext_idle_notification_v1> notification_;
};

}  // namespace

ExtIdleSource::ExtIdleSource(WaylandDisplay& display, bool heldBackByInhibitors)
    : WaylandIdleSource(display, ext_idle_notifier_v1_interface.name),
      heldBackByInhibitors_(heldBackByInhibitors) {}

bool ExtIdleSource::isInputAlone() const {
    return !heldBackByInhibitors_ && notifier_ &&
           ext_idle_notifier_v1_get_version(notifier_.get()) >= kVersion;
}

std::string ExtIdleSource::name() const {
    return isInputAlone() ? "ext-idle-notify (input alone)"
                          : "ext-idle-notify (held back by films and calls)";
}

void ExtIdleSource::bindNotifier(WaylandDisplay& display, const WaylandGlobal& global) {
    notifier_.reset(display.bind<ext_idle_notifier_v1>(global, ext_idle_notifier_v1_interface, kVersion));
}

std::unique_ptr<WaylandSeatIdle> ExtIdleSource::watch(wl_seat* seat) {
    const auto timeout = WaylandSeatIdle::timeoutMilliseconds;
    return std::make_unique<Notification>(
        isInputAlone() ? ext_idle_notifier_v1_get_input_idle_notification(notifier_.get(), timeout, seat)
                       : ext_idle_notifier_v1_get_idle_notification(notifier_.get(), timeout, seat));
}

}  // namespace orvane
