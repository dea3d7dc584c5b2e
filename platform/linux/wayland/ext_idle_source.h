#pragma once

#include <wayland-protocols/ext-idle-notify-v1-client.h>

#include "foundation/internal.h"
#include "platform/linux/wayland/wayland_idle_source.h"

namespace orvane {

template <>
struct WaylandRelease<ext_idle_notifier_v1> {
    void operator()(ext_idle_notifier_v1* proxy) const { ext_idle_notifier_v1_destroy(proxy); }
};

/// Idle time by ext-idle-notify-v1.
class ExtIdleSource : public WaylandIdleSource {
  public:
    /// Films and calls may hold the idle time back, so that whoever watches one counts as present. Where the
    /// compositor can tell input alone (version 2), that is up to `heldBackByInhibitors`; an older one always
    /// lets them.
    ExtIdleSource(WaylandDisplay& display, bool heldBackByInhibitors);

    std::string name() const override;

  protected:
    bool hasNotifier() const override { return notifier_ != nullptr; }
    void bindNotifier(WaylandDisplay& display, const WaylandGlobal& global) override;
    void releaseNotifier() override { notifier_.reset(); }
    std::unique_ptr<WaylandSeatIdle> watch(wl_seat* seat) override;

  private:
    bool isInputAlone() const;

    const bool heldBackByInhibitors_;
    WaylandHandle<ext_idle_notifier_v1> notifier_;
};

}  // namespace orvane
