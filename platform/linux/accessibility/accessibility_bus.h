#pragma once

#include <memory>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/session/shared_bus.h"

namespace orvane {

/// The bus of its own on which applications offer themselves to assistive programs (AT-SPI). Its address is
/// had from a service of the session's bus, which is never started for that, and no setting is changed: what
/// applications do not offer by themselves stays unknown. Main thread only.
class AccessibilityBus : public BusUser {
  public:
    /// Adds itself to the session's bus.
    explicit AccessibilityBus(SharedBus& sessionBus);
    ~AccessibilityBus() override = default;
    AccessibilityBus(const AccessibilityBus&) = delete;
    AccessibilityBus& operator=(const AccessibilityBus&) = delete;

    /// Before the session's bus is opened. The user must be destroyed before this.
    void add(BusUser& user) { users_.push_back(&user); }
    bool isOpen() const { return link_ && link_->isOpen(); }
    /// The bus was looked for.
    bool isDecided() const;

    void busOpened(BusConnection& bus) override;
    void busClosed() override;

  private:
    void launcherOwned(bool isOwned);
    void close();
    void open(const char* address);

    SharedBus& sessionBus_;
    BusConnection* session_ = nullptr;
    std::vector<BusUser*> users_;
    BusToken launcherWatch_;
    /// Counts the owners of the service's name: an answer from an earlier one is void.
    unsigned owner_ = 0;
    bool isAddressDecided_ = false;
    std::unique_ptr<BusLink> link_;
};

}  // namespace orvane
