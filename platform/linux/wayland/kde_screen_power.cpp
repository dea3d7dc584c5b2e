#include "platform/linux/wayland/kde_screen_power.h"

namespace orvane {

template <>
struct WaylandRelease<org_kde_kwin_dpms> {
    void operator()(org_kde_kwin_dpms* proxy) const { org_kde_kwin_dpms_release(proxy); }
};

namespace {

class OutputPower : public WaylandOutputPower {
  public:
    explicit OutputPower(org_kde_kwin_dpms* power) : power_(power) {
        // An output that cannot be switched is told to be on, as it is.
        static constexpr org_kde_kwin_dpms_listener listener{
            [](void*, org_kde_kwin_dpms*, std::uint32_t) {},
            [](void* self, org_kde_kwin_dpms*, std::uint32_t mode) {
                static_cast<OutputPower*>(self)->mode_ = mode;
            },
            [](void* self, org_kde_kwin_dpms*) { static_cast<OutputPower*>(self)->done(); }};
        org_kde_kwin_dpms_add_listener(power, &listener, this);
    }

  private:
    void done() { setOn(mode_ == ORG_KDE_KWIN_DPMS_MODE_ON); }

    WaylandHandle<org_kde_kwin_dpms> power_;
    std::uint32_t mode_ = ORG_KDE_KWIN_DPMS_MODE_ON;
};

}  // namespace

KdeScreenPower::KdeScreenPower(WaylandDisplay& display)
    : WaylandScreenPower(display, org_kde_kwin_dpms_manager_interface.name) {}

void KdeScreenPower::bindManager(WaylandDisplay& display, const WaylandGlobal& global) {
    manager_.reset(display.bind<org_kde_kwin_dpms_manager>(global, org_kde_kwin_dpms_manager_interface, 1));
}

std::unique_ptr<WaylandOutputPower> KdeScreenPower::watch(wl_output* output) {
    return std::make_unique<OutputPower>(org_kde_kwin_dpms_manager_get(manager_.get(), output));
}

}  // namespace orvane
