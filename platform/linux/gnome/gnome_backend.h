#pragma once

#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"
#include "platform/linux/gnome/gnome_picture.h"
#include "platform/linux/main_loop_timer.h"
#include "platform/linux/session/shared_bus.h"

namespace orvane {

/// The windows of GNOME Shell, as our extension of it tells them. What is told here is what the extension
/// answered after it last said that something had changed, so no question waits. A shell that ends and starts
/// again is noticed by the extension's name on the bus. Main thread only.
class GnomeBackend : public DesktopBackend, public BusUser {
  public:
    /// Adds itself to the bus.
    explicit GnomeBackend(SharedBus& bus);
    ~GnomeBackend() override = default;
    GnomeBackend(const GnomeBackend&) = delete;
    GnomeBackend& operator=(const GnomeBackend&) = delete;

    std::string name() const override { return "GNOME Shell (extension)"; }
    bool isAvailable() const override { return picture_.has_value(); }
    bool isDecided() const override;
    std::optional<DesktopWindow> activeWindow() override;
    std::vector<DesktopWindow> windows() override;
    std::optional<Shortcoming> shortcoming() const override;

    void busOpened(BusConnection& bus) override;
    void busClosed() override;

  private:
    void extensionOwned(bool isOwned);
    void ask();
    void answered(std::optional<GnomePicture> picture);
    void tellNow();

    SharedBus& sharedBus_;
    BusConnection* bus_ = nullptr;
    BusToken extensionWatch_;
    BusToken shellWatch_;
    BusToken changedSignal_;
    bool isShellThere_ = false;
    bool isExtensionThere_ = false;
    /// Whether the bus has said so much.
    bool isExtensionDecided_ = false;
    /// Counts the owners of the extension's name: an answer from an earlier one is void.
    unsigned owner_ = 0;
    bool isAsking_ = false;
    bool isOutdated_ = false;
    std::optional<GnomePicture> picture_;
    MainLoopTimer retryTimer_;
};

}  // namespace orvane
