#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/session/bus_link.h"
#include "platform/linux/session/login_manager.h"
#include "platform/linux/session/screen_saver_watch.h"

namespace orvane {

/// A service that session notices come from, for diagnoses.
struct SessionService {
    std::string name;
    bool isAvailable = false;
    /// What is in use for it.
    std::string backend;
    /// What it gives, or why it gives nothing.
    std::string detail;
};

/// Tells of sleep, locks and shutdown, from the login manager and the desktop's screen saver. Whatever of
/// them is missing is a state and never an error, and what comes later or comes back is used. Main thread
/// only; nothing waits. A callback must not destroy the monitor.
class SessionMonitor {
  public:
    explicit SessionMonitor(std::string systemBusAddress = BusLink::systemBusAddress(),
                            std::string sessionBusAddress = BusLink::sessionBusAddress());
    ~SessionMonitor();

    /// The machine is about to sleep, or has woken. The machine stays awake until a call with true has
    /// returned.
    std::function<void(bool asleep)> onSleep;
    /// The user's session was locked or unlocked, whoever tells so.
    std::function<void(bool locked)> onLock;
    /// The machine is about to be shut down, or the session that this process belongs to has ended.
    std::function<void()> onEnd;

    /// What `status` or `isDecided` tell may have changed.
    std::function<void()> onStatusChanged;

    /// Call it once, with the callbacks set. The present state is told as a change from awake and unlocked.
    void start();

    bool isLocked() const { return isLocked_; }
    /// To be called when the user is seen at work, such as by another window becoming active: ends a lock
    /// that was asked for but that no locker confirmed, since some lockers never tell that they are done.
    void userIsBack();

    /// Every service has been looked for once, so that `status` no longer misses one that is there.
    bool isDecided() const;
    /// The buses, and what is to be found on those that can be reached.
    std::vector<SessionService> status() const;

  private:
    void openedSystemBus(BusConnection& bus);
    void openedSessionBus(BusConnection& bus);
    void update();
    SessionService loginStatus() const;
    SessionService saverStatus() const;

    BusLink systemBus_;
    BusLink sessionBus_;
    std::unique_ptr<LoginManager> login_;
    std::vector<std::unique_ptr<ScreenSaverWatch>> savers_;
    bool isLocked_ = false;
};

}  // namespace orvane
