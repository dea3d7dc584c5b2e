#pragma once

#include <functional>
#include <optional>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/session/bus_connection.h"

namespace orvane {

/// One of the names under which desktops offer their screen saver or locker on the session bus. The service
/// may come and go while this object lives. Main thread only.
class ScreenSaverWatch {
  public:
    /// The connection must outlive this object. `path` is the object that is asked for the present state;
    /// changes are heard from any object of the service, since desktops differ in which one tells them.
    ScreenSaverWatch(BusConnection& bus, const std::string& service, const std::string& path);

    const std::string& service() const { return saver_.service; }
    /// Whether the service is there; none while that is not known yet.
    std::optional<bool> isAvailable() const { return isAvailable_; }
    bool isActive() const { return isActive_; }

    /// Called after any change of what the accessors tell.
    std::function<void()> onChanged;

  private:
    void setOwned(bool isOwned);
    void setActive(bool isActive);

    BusConnection& bus_;
    const BusObject saver_;
    BusToken nameWatch_;
    BusToken activeSignal_;
    std::optional<bool> isAvailable_;
    bool isActive_ = false;
};

}  // namespace orvane
