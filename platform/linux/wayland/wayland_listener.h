#pragma once

#include <cstdint>
#include <string>

#include "foundation/internal.h"

namespace orvane {

/// Something that a compositor offers.
struct WaylandGlobal {
    std::uint32_t name = 0;
    std::string interface;
    std::uint32_t version = 0;
};

/// Somebody who uses what a compositor offers. Called on the main loop, or while the display is started.
class WaylandListener {
  public:
    /// Something is offered from now on, or was when the connection came about. To be bound here when wanted.
    virtual void globalAdded(const WaylandGlobal& global) = 0;
    /// It is offered no longer; what was bound of it is to be destroyed.
    virtual void globalRemoved(std::uint32_t /*name*/) {}
    /// All that was offered at the beginning has been told, and the first events of what was bound have
    /// arrived.
    virtual void compositorReady() {}
    /// The compositor is gone: everything bound is to be destroyed now. Afterwards it may come back.
    virtual void compositorLost() = 0;

  protected:
    ~WaylandListener() = default;
};

}  // namespace orvane
