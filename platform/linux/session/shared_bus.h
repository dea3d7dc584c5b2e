#pragma once

#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/session/bus_link.h"

namespace orvane {

/// Somebody who speaks to others over a shared bus. Main thread only.
class BusUser {
  public:
    virtual ~BusUser() = default;

    /// The connection is valid until busClosed returns or the bus is destroyed.
    virtual void busOpened(BusConnection& bus) = 0;
    virtual void busClosed() = 0;
};

/// One connection to a message bus for several users, opened again when it was lost.
class SharedBus {
  public:
    explicit SharedBus(std::string address);

    /// Before `open`. The user must be destroyed before the bus, and with no main loop run in between.
    void add(BusUser& user) { users_.push_back(&user); }
    void open() { link_.open(); }
    /// The first attempt to reach the bus has ended, either way.
    bool isDecided() const { return link_.isDecided(); }
    bool isOpen() const { return link_.isOpen(); }

  private:
    std::vector<BusUser*> users_;
    BusLink link_;
};

}  // namespace orvane
