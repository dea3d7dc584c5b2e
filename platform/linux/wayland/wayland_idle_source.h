#pragma once

#include <map>
#include <memory>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/idle_source.h"
#include "platform/linux/main_loop_timer.h"
#include "platform/linux/wayland/wayland_display.h"

namespace orvane {

/// When the user of one seat began to touch nothing, by the events of a notifier: it speaks once nothing was
/// touched for a time-out, and again at the next input. What was before the notifier was made is not known.
class WaylandSeatIdle {
  public:
    /// After that long the notifier speaks. Shorter rests count as none, and cost no wake-ups.
    static constexpr unsigned timeoutMilliseconds = 2000;

    virtual ~WaylandSeatIdle() = default;

    void becameIdle();
    void resumed() { since_.reset(); }
    /// 0 while something was touched a moment ago.
    double seconds() const;

  private:
    /// Seconds on a clock that runs on while the machine sleeps.
    std::optional<double> since_;
};

/// Idle time by one of the protocols that tell it, over all seats: the last input on any of them counts.
class WaylandIdleSource : public IdleSource, public WaylandListener {
  public:
    /// Adds itself to the display, which must be started later and be destroyed first or be disconnected
    /// before this is destroyed.
    WaylandIdleSource(WaylandDisplay& display, std::string notifierInterface);

    bool isAvailable() const override { return display_.answers() && hasNotifier() && !seats_.empty(); }
    bool isDecided() const override { return display_.isDecided() && !noticeTimer_.isPending(); }
    std::optional<double> idleSeconds() override;

    void globalAdded(const WaylandGlobal& global) override;
    void globalRemoved(std::uint32_t name) override;
    void compositorReady() override;
    void compositorLost() override;

  protected:
    // What the protocols differ in.

    virtual bool hasNotifier() const = 0;
    virtual void bindNotifier(WaylandDisplay& display, const WaylandGlobal& global) = 0;
    virtual void releaseNotifier() = 0;
    virtual std::unique_ptr<WaylandSeatIdle> watch(wl_seat* seat) = 0;

  private:
    struct Seat {
        WaylandHandle<wl_seat> seat;
        std::unique_ptr<WaylandSeatIdle> idle;
    };

    void watchSeats();
    void availabilityMayHaveChanged();

    WaylandDisplay& display_;
    const std::string notifierInterface_;
    std::uint32_t notifierName_ = 0;
    std::map<std::uint32_t, Seat> seats_;
    bool toldAvailable_ = false;
    MainLoopTimer noticeTimer_;
};

}  // namespace orvane
