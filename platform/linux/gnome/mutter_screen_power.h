#pragma once

#include <optional>

#include "foundation/internal.h"
#include "platform/linux/screen_power_source.h"
#include "platform/linux/session/shared_bus.h"

namespace orvane {

/// Screen power by the display configuration of Mutter, the compositor of GNOME and its kin. Main thread
/// only.
class MutterScreenPower : public ScreenPowerSource, public BusUser {
  public:
    /// Adds itself to the bus.
    explicit MutterScreenPower(SharedBus& bus);
    ~MutterScreenPower() override = default;
    MutterScreenPower(const MutterScreenPower&) = delete;
    MutterScreenPower& operator=(const MutterScreenPower&) = delete;

    std::string name() const override { return "Mutter display configuration"; }
    bool isAvailable() const override { return isOff_.has_value(); }
    bool areScreensOff() const override { return isOff_.value_or(false); }

    void busOpened(BusConnection& bus) override;
    void busClosed() override;

  private:
    void owned(bool isOwned);
    void ask();
    void setOff(std::optional<bool> isOff);

    BusConnection* bus_ = nullptr;
    BusToken nameWatch_;
    BusToken changedSignal_;
    /// Counts the owners of the name: an answer from an earlier one is void.
    unsigned owner_ = 0;
    std::optional<bool> isOff_;
};

}  // namespace orvane
