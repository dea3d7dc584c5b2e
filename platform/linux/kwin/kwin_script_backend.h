#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"
#include "platform/linux/kwin/kwin_picture.h"
#include "platform/linux/main_loop_timer.h"
#include "platform/linux/session/shared_bus.h"
#include "platform/linux/wayland/wayland_display.h"

namespace orvane {

/// The windows of KWin as a script of ours in it reports them, which needs no permission. The script is
/// loaded over the session bus, as long as KWin is the Wayland compositor and tells its windows in no better
/// way, and unloaded at the end; nothing is kept in the user's settings. A program that crashed leaves a
/// script that removes itself. Main thread only.
class KwinScriptBackend : public DesktopBackend, public BusUser, public WaylandListener {
  public:
    /// Adds itself to both. The display must be started later, and be destroyed first or be disconnected
    /// before this is destroyed.
    KwinScriptBackend(SharedBus& bus, WaylandDisplay& display);
    ~KwinScriptBackend() override;
    KwinScriptBackend(const KwinScriptBackend&) = delete;
    KwinScriptBackend& operator=(const KwinScriptBackend&) = delete;

    /// What KWin calls the script that was loaded over the connection of that name.
    static std::string scriptName(const std::string& connection) { return "orvane" + connection; }

    std::string name() const override { return "KWin (script)"; }
    bool isAvailable() const override { return picture_.has_value(); }
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
    void kwinOwned(bool isOwned);
    bool isWanted() const;
    void update();
    void start();
    void stop();
    void load();
    void loaded(GVariant* values);
    GVariant* ownScript() const;
    void giveUp();
    void reported(const std::string& sender, const std::string& report);
    void removeFile();
    void tellNow();

    SharedBus& sharedBus_;
    WaylandDisplay& display_;
    BusConnection* bus_ = nullptr;
    BusToken kwinWatch_;
    BusToken reports_;
    /// Whether the bus has said who owns KWin's name.
    bool isKwinDecided_ = false;
    bool isKwinOnBus_ = false;
    bool isKwinCompositor_ = false;
    bool hasPermission_ = false;
    /// A script is there, is being loaded, or is to be tried again.
    bool isStarted_ = false;
    /// Counts what was begun or ended: an answer to what was asked earlier is void.
    unsigned attempt_ = 0;
    /// The connection that is KWin's; empty without one.
    std::string kwin_;
    /// KWin reads it some time after it was asked to; removed with the first report.
    std::filesystem::path file_;
    bool isLoaded_ = false;
    bool isGivenUp_ = false;
    KwinPictureReader reader_;
    std::optional<KwinPicture> picture_;
    MainLoopTimer patience_;
    unsigned retryMilliseconds_;
    MainLoopTimer retryTimer_;
    MainLoopTimer noticeTimer_;
};

}  // namespace orvane
