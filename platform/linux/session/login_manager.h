#pragma once

#include <functional>
#include <optional>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/session/bus_connection.h"

namespace orvane {

/// The machine's login manager (org.freedesktop.login1): sleep, shutdown, and the lock of this user's
/// session. It may come and go while this object lives. While it is there and the machine is awake, a delay
/// lock is held, which keeps the machine from sleeping before `onSleep(true)` has returned. Main thread only.
class LoginManager {
  public:
    /// The connection must outlive this object.
    explicit LoginManager(BusConnection& bus);
    ~LoginManager();
    LoginManager(const LoginManager&) = delete;
    LoginManager& operator=(const LoginManager&) = delete;

    /// The machine is about to sleep, or has woken. Every true is followed by a false, also when the login
    /// manager is lost in between.
    std::function<void(bool asleep)> onSleep;
    std::function<void()> onShutdown;
    /// The session that this process belongs to has ended.
    std::function<void()> onLogout;
    /// Called after any change of what the accessors below tell.
    std::function<void()> onChanged;

    /// Whether the service answers; none while that is not known yet.
    std::optional<bool> isAvailable() const { return isAvailable_; }
    /// It is known whether the service is there, whether it lets sleep be delayed and which session is
    /// watched.
    bool isDecided() const { return isAvailable_ && !isDelayAsked_ && !isSessionAsked_; }
    bool isSleepDelayed() const { return delayLock_ >= 0; }
    /// The session whose lock is watched; empty when this user has none.
    const std::string& sessionPath() const { return sessionPath_; }
    bool isAsleep() const { return isAsleep_; }

    /// Somebody asked for a lock and has not taken it back, or the session says that it is locked.
    bool isLocked() const { return isLockRequested_ || isLockHinted_; }
    /// Forgets the request to lock, upon a sign that the user is back: not every screen locker says so.
    void forgetLockRequest();

  private:
    void appeared();
    void vanished();
    void prepareForSleep(bool begins);
    void takeDelayLock();
    void releaseDelayLock();
    void findSession();
    void findSessionOfProcess();
    void findSessionOfUser();
    void watchSession(const std::string& path);
    void watchOwnSession(const std::string& path);
    void setLockHint(bool isLocked);
    void setLock(bool isRequested, bool isHinted);
    void changed();

    BusConnection& bus_;
    BusToken nameWatch_;
    BusToken sleepSignal_;
    BusToken shutdownSignal_;
    BusToken sessionNewSignal_;
    BusToken sessionRemovedSignal_;
    BusToken lockSignal_;
    BusToken unlockSignal_;
    BusToken propertiesSignal_;

    std::optional<bool> isAvailable_;
    int delayLock_ = -1;
    bool isDelayAsked_ = false;
    bool isSessionAsked_ = false;
    bool isAsleep_ = false;
    std::string sessionPath_;
    /// Whether this process belongs to that session, rather than only its user.
    bool isOwnSession_ = false;
    bool isLockRequested_ = false;
    bool isLockHinted_ = false;
};

}  // namespace orvane
