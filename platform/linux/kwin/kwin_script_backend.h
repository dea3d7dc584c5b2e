#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"
#include "platform/linux/kwin/kwin_report.h"
#include "platform/linux/kwin/kwin_script.h"
#include "platform/linux/main_loop_timer.h"
#include "platform/linux/session/shared_bus.h"
#include "platform/linux/wayland/wayland_display.h"

namespace orvane {

/// Windows of KWin as our script in it reports them, which takes no permission. The script is there only
/// while KWin is the compositor and does not tell its windows by its protocol. What is told here is what the
/// last report said, so no question waits. Main thread only.
class KWinScriptBackend : public DesktopBackend, public BusUser, public WaylandListener {
  public:
    /// Adds itself to both. The display must be started later, and be destroyed first or be disconnected
    /// before this is destroyed.
    KWinScriptBackend(SharedBus& bus, WaylandDisplay& display);

    std::string name() const override { return "KWin (script)"; }
    bool isAvailable() const override { return report_.has_value(); }
    bool isDecided() const override;
    std::optional<DesktopWindow> activeWindow() override;
    std::vector<DesktopWindow> windows() override;
    std::optional<Shortcoming> shortcoming() const override;

    void busOpened(BusConnection& bus) override;
    void busClosed() override;

    void globalAdded(const WaylandGlobal& global) override;
    void compositorReady() override { update(); }
    void compositorLost() override;

  private:
    /// KWin is what shows the windows, and tells them in no better way.
    bool isWanted() const;
    void update();
    void start();
    void reported(const std::string& text);
    void failed();
    void tell();

    SharedBus& sharedBus_;
    WaylandDisplay& display_;
    BusConnection* bus_ = nullptr;
    BusToken nameWatch_;
    BusToken desktopShownSignal_;
    bool isKWinOnBus_ = false;
    /// Whether the bus has said so much.
    bool isNameDecided_ = false;
    bool isKWinCompositor_ = false;
    bool hasPermission_ = false;
    std::unique_ptr<KWinScript> script_;
    /// No report came the last time.
    bool hasFailed_ = false;
    unsigned retryMilliseconds_;
    std::optional<KWinReport> report_;
    /// The user has put all windows aside.
    bool isDesktopShown_ = false;
    std::int64_t lastNumber_ = 0;
    /// Of the windows of the last report, by KWin's identifier.
    std::map<std::string, std::int64_t> numbers_;
    bool toldAvailable_ = false;
    std::int64_t toldActive_ = 0;
    MainLoopTimer retryTimer_;
    MainLoopTimer noticeTimer_;
};

}  // namespace orvane
