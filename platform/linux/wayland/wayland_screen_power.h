#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/main_loop_timer.h"
#include "platform/linux/screen_power_source.h"
#include "platform/linux/wayland/wayland_display.h"

namespace orvane {

/// Whether one output has power, as one of the protocols tells it.
class WaylandOutputPower {
  public:
    virtual ~WaylandOutputPower() = default;

    /// Absent until the compositor says so, and when it cannot say.
    std::optional<bool> isOn() const { return isOn_; }

    /// Set by the owner.
    std::function<void()> onChanged;

  protected:
    void setOn(std::optional<bool> isOn);

  private:
    std::optional<bool> isOn_;
};

/// Screen power by one of the protocols that tell it. Outputs that cannot tell are passed over; a compositor
/// without any output that can is not available.
class WaylandScreenPower : public ScreenPowerSource, public WaylandListener {
  public:
    /// Adds itself to the display, which must be started later and be destroyed first or be disconnected
    /// before this is destroyed.
    WaylandScreenPower(WaylandDisplay& display, std::string managerInterface);

    bool isAvailable() const override;
    bool areScreensOff() const override;

    void globalAdded(const WaylandGlobal& global) override;
    void globalRemoved(std::uint32_t name) override;
    void compositorReady() override { changed(); }
    void compositorLost() override;

  protected:
    // What the protocols differ in.

    virtual bool hasManager() const = 0;
    virtual void bindManager(WaylandDisplay& display, const WaylandGlobal& global) = 0;
    virtual void releaseManager() = 0;
    virtual std::unique_ptr<WaylandOutputPower> watch(wl_output* output) = 0;

  private:
    struct Output {
        WaylandHandle<wl_output> output;
        std::unique_ptr<WaylandOutputPower> power;
    };

    void watchOutputs();
    void changed();

    WaylandDisplay& display_;
    const std::string managerInterface_;
    std::uint32_t managerName_ = 0;
    std::map<std::uint32_t, Output> outputs_;
    MainLoopTimer noticeTimer_;
};

}  // namespace orvane
