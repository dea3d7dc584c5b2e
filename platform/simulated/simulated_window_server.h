#pragma once

#include "platform/simulated/virtual_clock.h"
#include "platform/window_server.h"

namespace orvane {

/// A window server that is told what stands on the screen and when the user touched something.
class ORVANE_EXPORT SimulatedWindowServer : public WindowServer {
  public:
    /// The clock must outlive the server. The seconds since the last input count from its present time.
    explicit SimulatedWindowServer(VirtualClock& clock) : clock_(clock), lastInput_(clock.time()) {}

    /// All windows, whatever the options: the script holds only those that are on screen.
    std::vector<WindowIdentifier> windowListCreate(std::uint32_t options,
                                                   WindowIdentifier referenceWindow) override;
    std::vector<Dictionary> windowListCreateDescriptionFromArray(
        std::span<const WindowIdentifier> windows) override;
    double secondsSinceLastEventType(std::int32_t state, std::uint32_t eventType) override;

    /// The windows on screen, front to back. A description without "kCGWindowNumber" is given an unused one;
    /// everything else is passed on as it stands.
    void setWindows(std::vector<Dictionary> descriptions);
    /// The user touched keyboard or pointer now.
    void noteInput() { lastInput_ = clock_.time(); }
    /// The last input lies that long back; the time since then goes on counting.
    void setTimeSinceLastInput(VirtualClock::Time time) { lastInput_ = clock_.time() - time; }

  private:
    struct Window {
        WindowIdentifier identifier;
        Dictionary description;
    };

    VirtualClock& clock_;
    VirtualClock::Time lastInput_;
    std::vector<Window> windows_;
};

}  // namespace orvane
