#pragma once

#include <cstdint>

#include "foundation/internal.h"
#include "platform/linux/idle_source.h"
#include "platform/linux/session/shared_bus.h"

namespace orvane {

/// Idle time by the idle monitor of Mutter, the compositor of GNOME and its kin. Two watches there tell when
/// a rest of some seconds began and when it ended, so that no question for the idle time waits. Main thread
/// only.
class MutterIdleSource : public IdleSource, public BusUser {
  public:
    /// A rest that is shorter counts as none.
    static constexpr std::uint64_t restMilliseconds = 2000;

    /// Adds itself to the bus. Films and calls may hold the idle time back, so that whoever watches one
    /// counts as present.
    MutterIdleSource(SharedBus& bus, bool heldBackByInhibitors);
    ~MutterIdleSource() override = default;
    MutterIdleSource(const MutterIdleSource&) = delete;
    MutterIdleSource& operator=(const MutterIdleSource&) = delete;

    std::string name() const override;
    bool isAvailable() const override { return isAvailable_; }
    bool isDecided() const override;
    std::optional<double> idleSeconds() override;

    void busOpened(BusConnection& bus) override;
    void busClosed() override;

  private:
    void owned(bool isOwned);
    void setAvailable(bool isAvailable);
    void watchFired(std::uint32_t watch);
    void rest();
    void awaitInput();
    void askIdleTime();

    SharedBus& sharedBus_;
    const bool heldBackByInhibitors_;
    BusConnection* bus_ = nullptr;
    BusToken nameWatch_;
    BusToken firedSignal_;
    bool isAvailable_ = false;
    bool isDecided_ = false;
    /// Counts the owners of the monitor's name: an answer from an earlier one is void.
    unsigned owner_ = 0;
    /// Numbers of the watches; 0 while there is none.
    std::uint32_t restWatch_ = 0;
    std::uint32_t inputWatch_ = 0;
    bool isInputAwaited_ = false;
    bool isAsking_ = false;
    /// When the last input was, on the clock since boot; absent while the user is at it.
    std::optional<double> restSince_;
};

}  // namespace orvane
