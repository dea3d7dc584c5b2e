#include "platform/linux/kwin/kwin_screen_power.h"

#include <utility>

namespace orvane {

struct KwinScreenPower::Power : Watch {
    Power(org_kde_kwin_dpms* power, Handler told) : object(power), handler(std::move(told)) {
        org_kde_kwin_dpms_add_listener(power, &kListener, this);
    }

    static void supported(void*, org_kde_kwin_dpms*, std::uint32_t) {}
    static void mode(void* self, org_kde_kwin_dpms*, std::uint32_t mode) {
        static_cast<Power*>(self)->handler(mode == ORG_KDE_KWIN_DPMS_MODE_ON);
    }
    static void done(void*, org_kde_kwin_dpms*) {}

    static constexpr org_kde_kwin_dpms_listener kListener{&supported, &mode, &done};

    WaylandHandle<org_kde_kwin_dpms> object;
    const Handler handler;
};

void KwinScreenPower::bindManager(const WaylandGlobal& global) {
    manager_.reset(display().bind<org_kde_kwin_dpms_manager>(global, org_kde_kwin_dpms_manager_interface, 1));
}

std::unique_ptr<OutputPower::Watch> KwinScreenPower::watch(wl_output* output, Handler handler) {
    return std::make_unique<Power>(org_kde_kwin_dpms_manager_get(manager_.get(), output), std::move(handler));
}

}  // namespace orvane
