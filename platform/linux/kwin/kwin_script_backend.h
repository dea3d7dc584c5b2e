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

namespace orvane {

/// The windows of KWin as a script of ours in it reports them, which needs no permission. The script is
/// loaded over the session bus and unloaded at the end; nothing is kept in the user's settings. Main thread
/// only.
class KwinScriptBackend : public DesktopBackend, public BusUser {
  public:
    /// Adds itself to the bus.
    explicit KwinScriptBackend(SharedBus& bus);
    ~KwinScriptBackend() override;
    KwinScriptBackend(const KwinScriptBackend&) = delete;
    KwinScriptBackend& operator=(const KwinScriptBackend&) = delete;

    std::string name() const override { return "KWin (script)"; }
    bool isAvailable() const override { return picture_.has_value(); }
    bool isDecided() const override;
    std::optional<DesktopWindow> activeWindow() override;
    std::vector<DesktopWindow> windows() override;
    std::optional<Shortcoming> shortcoming() const override;

    void busOpened(BusConnection& bus) override;
    void busClosed() override;

  private:
    void kwinOwned(bool isOwned);
    void load();
    void unload();
    void giveUp();
    std::string scriptName() const;
    void reported(const std::string& sender, const std::string& report);
    void forget();
    void tell();

    SharedBus& sharedBus_;
    BusConnection* bus_ = nullptr;
    BusToken kwinWatch_;
    BusToken reports_;
    /// Whether the bus has said who owns KWin's name.
    bool isKwinDecided_ = false;
    /// Counts the owners of the name: an answer from an earlier one is void.
    unsigned owner_ = 0;
    /// The connection that is KWin's; empty without one.
    std::string kwin_;
    /// KWin reads it some time after it was asked to; removed with the first report.
    std::filesystem::path file_;
    bool isLoaded_ = false;
    bool isGivenUp_ = false;
    KwinPictureReader reader_;
    std::optional<KwinPicture> picture_;
    bool toldAvailable_ = false;
    std::int64_t toldActive_ = 0;
    MainLoopTimer patience_;
};

}  // namespace orvane
