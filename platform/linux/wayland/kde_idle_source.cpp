#include "platform/linux/wayland/kde_idle_source.h"

namespace orvane {

template <>
struct WaylandRelease<org_kde_kwin_idle_timeout> {
    void operator()(org_kde_kwin_idle_timeout* proxy) const { org_kde_kwin_idle_timeout_release(proxy); }
};

namespace {

class Timeout : public WaylandSeatIdle {
  public:
    explicit Timeout(org_kde_kwin_idle_timeout* timeout) : timeout_(timeout) {
        static constexpr org_kde_kwin_idle_timeout_listener listener{
            [](void* self, org_kde_kwin_idle_timeout*) { static_cast<Timeout*>(self)->becameIdle(); },
            [](void* self, org_kde_kwin_idle_timeout*) { static_cast<Timeout*>(self)->resumed(); }};
        org_kde_kwin_idle_timeout_add_listener(timeout, &listener, this);
    }

  private:
    WaylandHandle<org_kde_kwin_idle_timeout> timeout_;
};

}  // namespace

KdeIdleSource::KdeIdleSource(WaylandDisplay& display)
    : WaylandIdleSource(display, org_kde_kwin_idle_interface.name) {}

void KdeIdleSource::bindNotifier(WaylandDisplay& display, const WaylandGlobal& global) {
    idle_.reset(display.bind<org_kde_kwin_idle>(global, org_kde_kwin_idle_interface, 1));
}

std::unique_ptr<WaylandSeatIdle> KdeIdleSource::watch(wl_seat* seat) {
    return std::make_unique<Timeout>(
        org_kde_kwin_idle_get_idle_timeout(idle_.get(), seat, WaylandSeatIdle::timeoutMilliseconds));
}

}  // namespace orvane
