#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/accessibility/accessibility_bus.h"
#include "platform/linux/accessibility/atspi_walk.h"
#include "platform/linux/desktop_backend.h"
#include "platform/linux/main_loop_timer.h"

namespace orvane {

/// The windows of a desktop of Mutter as the applications themselves describe them, for where the desktop
/// tells nothing: applications that offer no accessibility are missing, and of the order only the active
/// window and who was active before is known. No question waits. Main thread only.
class AccessibilityBackend : public DesktopBackend {
  public:
    /// Adds itself to both buses.
    AccessibilityBackend(SharedBus& sessionBus, AccessibilityBus& accessibilityBus);
    ~AccessibilityBackend() override;
    AccessibilityBackend(const AccessibilityBackend&) = delete;
    AccessibilityBackend& operator=(const AccessibilityBackend&) = delete;

    std::string name() const override { return "accessibility (AT-SPI)"; }
    bool isAvailable() const override { return isAvailable_; }
    bool isDecided() const override;
    std::optional<DesktopWindow> activeWindow() override;
    std::vector<DesktopWindow> windows() override;

  private:
    /// Listens on one of the buses.
    class Listener : public BusUser {
      public:
        explicit Listener(std::function<void(BusConnection*)> changed) : changed_(std::move(changed)) {}
        void busOpened(BusConnection& bus) override { changed_(&bus); }
        void busClosed() override { changed_(nullptr); }

      private:
        std::function<void(BusConnection*)> changed_;
    };

    void sessionBusChanged(BusConnection* bus);
    void accessibilityBusChanged(BusConnection* bus);
    void mutterOwned(bool isOwned);
    void askForOverview();
    void begin();
    void end();
    void registryOwned(bool isOwned);
    void forget();
    void listenToWindows();
    void look();
    void lookAgain();
    void looked(std::optional<std::vector<AtspiWindow>> found);
    void tellNow();
    /// The window that keys go to.
    std::int64_t active() const;
    std::int64_t numberOf(const atspi::Object& object);

    SharedBus& sessionBus_;
    AccessibilityBus& accessibilityBus_;
    Listener sessionListener_;
    Listener accessibilityListener_;
    BusConnection* session_ = nullptr;
    BusConnection* bus_ = nullptr;
    BusToken mutterWatch_;
    BusToken shellProperties_;
    BusToken registryWatch_;
    BusToken windowEvents_;
    /// Whether the session's bus has said so much.
    bool isMutterDecided_ = false;
    /// The compositor, which is an application of its own here; 0 while there is none of its kind.
    std::int32_t mutterProcess_ = 0;
    unsigned mutterOwner_ = 0;
    /// Behind the shell's overview an application still believes that its window is the active one.
    bool isOverviewShown_ = false;

    std::shared_ptr<AtspiWalk> walk_;
    bool isOutdated_ = false;
    bool hasLooked_ = false;
    /// In microseconds on GLib's monotonic clock.
    std::int64_t lookedAt_ = 0;
    MainLoopTimer lookTimer_;

    bool isAvailable_ = false;
    /// The active one first, then those that were active before, the latest first.
    std::vector<DesktopWindow> windows_;
    std::int64_t active_ = 0;
    std::vector<std::int64_t> formerlyActive_;
    std::map<atspi::Object, std::int64_t> numbers_;
    std::int64_t lastNumber_ = 0;
};

}  // namespace orvane
