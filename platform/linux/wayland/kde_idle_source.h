#pragma once

#include <wayland-protocols/idle-client.h>

#include "foundation/internal.h"
#include "platform/linux/wayland/wayland_idle_source.h"

namespace orvane {

template <>
struct WaylandRelease<org_kde_kwin_idle> {
    void operator()(org_kde_kwin_idle* proxy) const { org_kde_kwin_idle_destroy(proxy); }
};

/// Idle time by org_kde_kwin_idle, which older releases of sway and KWin offer. Films and calls hold it back.
class KdeIdleSource : public WaylandIdleSource {
  public:
    explicit KdeIdleSource(WaylandDisplay& display);

    std::string name() const override { return "org_kde_kwin_idle (held back by films and calls)"; }

  protected:
    bool hasNotifier() const override { return idle_ != nullptr; }
    void bindNotifier(WaylandDisplay& display, const WaylandGlobal& global) override;
    void releaseNotifier() override { idle_.reset(); }
    std::unique_ptr<WaylandSeatIdle> watch(wl_seat* seat) override;

  private:
    WaylandHandle<org_kde_kwin_idle> idle_;
};

}  // namespace orvane
