#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"
#include "platform/linux/main_loop_timer.h"
#include "platform/linux/x11/x11_connector.h"
#include "platform/linux/x11/x11_event_source.h"

namespace orvane {

/// An X11 desktop with a window manager that follows the Extended Window Manager Hints. Where no such window
/// manager runs there is no active window and no list. A server that goes away is tried again quietly until
/// it is back, after half a second at first and never less often than every five seconds. A callback may
/// destroy the backend.
class X11Backend : public DesktopBackend {
  public:
    /// Whether the monitors are switched off; none when the server cannot tell. Asked whenever the backend
    /// is.
    using ScreenPowerReader = std::function<std::optional<bool>(X11Connection&)>;

    /// What $DISPLAY says; empty when it is not set.
    static std::string displayFromEnvironment();
    /// Reads DPMS.
    static std::optional<bool> screensAreOff(X11Connection& connection);

    /// Connects, waiting up to a second for the server's answer; a later one arrives as
    /// onAvailabilityChanged. With an empty display there never is a desktop.
    explicit X11Backend(std::string display = displayFromEnvironment(),
                        ScreenPowerReader screenPower = &X11Backend::screensAreOff);
    ~X11Backend() override;

    std::string name() const override;
    bool isAvailable() const override;
    /// A window between two others, while the window manager has taken the focus from one and not yet given
    /// it to the other, is not seen: the former one is still told.
    std::optional<DesktopWindow> activeWindow() override;
    std::vector<DesktopWindow> windows() override;
    std::optional<double> idleSeconds() override;
    bool tellsScreenSleep() const override { return true; }

  private:
    struct Notices {
        std::optional<bool> available;
        bool activeWindow = false;
    };

    void adopt(std::unique_ptr<X11Connection> connection);
    void tryAgain();
    void lose();

    void handleEvents();
    void handle(const xcb_generic_event_t& event);
    void settle();
    void settleLater();
    void acceptActiveWindow(xcb_window_t window);
    xcb_window_t readActiveWindow();
    bool windowManagerRuns();

    void readScreenSaver();
    void readScreenPower();
    void updateSleep();

    void deliverSoon();
    void deliver();

    const std::string display_;
    const ScreenPowerReader screenPower_;
    X11Connector connector_;
    std::unique_ptr<X11Connection> connection_;
    std::unique_ptr<X11EventSource> events_;
    unsigned retryMilliseconds_;
    MainLoopTimer retryTimer_;

    xcb_window_t activeWindow_ = XCB_WINDOW_NONE;
    bool isTelling_ = false;  ///< that the active window changed
    bool isUnsettled_ = false;
    MainLoopTimer settleTimer_;
    xcb_window_t windowManager_ = XCB_WINDOW_NONE;

    bool saverRuns_ = false;
    bool screensOff_ = false;
    bool isAsleep_ = false;
    bool toldAsleep_ = false;
    MainLoopTimer wakeTimer_;

    Notices notices_;
    MainLoopTimer noticeTimer_;
    std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace orvane
