#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "foundation/internal.h"
#include "platform/linux/main_loop_timer.h"
#include "platform/linux/screen_power_source.h"
#include "platform/linux/wayland/wayland_display.h"

namespace orvane {

/// Screen power by a protocol that tells it of each output. Outputs that cannot tell are passed over; a
/// compositor without any output that can is not available. Protocols derive.
class OutputPower : public ScreenPowerSource, public WaylandListener {
  public:
    bool isAvailable() const override;
    bool areScreensOff() const override;

    void globalAdded(const WaylandGlobal& global) override;
    void globalRemoved(std::uint32_t name) override;
    void compositorReady() override { changed(); }
    void compositorLost() override;

  protected:
    /// The protocol's object for one output, which it destroys.
    struct Watch {
        virtual ~Watch() = default;
    };
    /// None: the output cannot tell.
    using Handler = std::function<void(std::optional<bool> isOn)>;

    /// Adds itself to the display, which must be started later and be destroyed first or be disconnected
    /// before this is destroyed. `manager` is the interface of the protocol's manager.
    OutputPower(WaylandDisplay& display, const wl_interface& manager);

    virtual void bindManager(const WaylandGlobal& global) = 0;
    virtual void dropManager() = 0;
    /// Called only while there is a manager. What it made stays in use without one.
    virtual std::unique_ptr<Watch> watch(wl_output* output, Handler handler) = 0;

    WaylandDisplay& display() { return display_; }

  private:
    struct Output {
        WaylandHandle<wl_output> output;
        std::unique_ptr<Watch> power;
        /// Absent until the compositor says so.
        std::optional<bool> isOn;
    };

    void watchOutputs();
    void changed();

    WaylandDisplay& display_;
    const wl_interface& manager_;
    /// None without a manager.
    std::optional<std::uint32_t> managerName_;
    std::map<std::uint32_t, Output> outputs_;
    MainLoopTimer noticeTimer_;
};

}  // namespace orvane
