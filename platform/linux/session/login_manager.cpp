#include "platform/linux/session/login_manager.h"

#include <unistd.h>

#include <cstdlib>
#include <utility>

#include "platform/linux/session/reply_values.h"

namespace orvane {

namespace {

const std::string kService = "org.freedesktop.login1";
const BusObject kManager{kService, "/org/freedesktop/login1", "org.freedesktop.login1.Manager"};
const std::string kSessionInterface = "org.freedesktop.login1.Session";
constexpr const char* kLockedHint = "LockedHint";

}  // namespace

LoginManager::LoginManager(BusConnection& bus) : bus_(bus) {
    nameWatch_ = bus_.watchName(kService, [this](bool isOwned) {
        if (isOwned) {
            appeared();
        } else {
            vanished();
        }
    });
    sleepSignal_ = bus_.subscribe(kManager, "PrepareForSleep", [this](const std::string&, GVariant* values) {
        prepareForSleep(booleanIn(values).value_or(false));
    });
    shutdownSignal_ =
        bus_.subscribe(kManager, "PrepareForShutdown", [this](const std::string&, GVariant* values) {
            if (booleanIn(values).value_or(false) && onShutdown) onShutdown();
        });
    // A host that starts with the machine may be there before its user's session.
    sessionNewSignal_ = bus_.subscribe(kManager, "SessionNew", [this](const std::string&, GVariant*) {
        if (sessionPath_.empty()) findSession();
    });
    sessionRemovedSignal_ =
        bus_.subscribe(kManager, "SessionRemoved", [this](const std::string&, GVariant* values) {
            const std::string path = removedSessionIn(values);
            if (path.empty() || path != sessionPath_) return;
            // Before the end of a lock is told: nobody is back.
            if (isOwnSession_ && onLogout) onLogout();
            watchSession({});
            findSession();
        });
}

LoginManager::~LoginManager() { releaseDelayLock(); }

void LoginManager::appeared() {
    isAvailable_ = true;
    takeDelayLock();
    findSession();
    changed();
}

void LoginManager::vanished() {
    isAvailable_ = false;
    releaseDelayLock();
    watchSession({});
    if (std::exchange(isAsleep_, false) && onSleep) onSleep(false);
    changed();
}

void LoginManager::prepareForSleep(bool begins) {
    if (std::exchange(isAsleep_, begins) == begins) return;
    if (onSleep) onSleep(begins);
    if (begins) {
        releaseDelayLock();
    } else {
        takeDelayLock();
    }
    changed();
}

void LoginManager::takeDelayLock() {
    isDelayAsked_ = true;
    bus_.call(
        kManager, "Inhibit",
        g_variant_new("(ssss)", "sleep", "Orvane", "Activity is stored before the machine sleeps", "delay"),
        [this](GVariant* values, GUnixFDList* descriptors) {
            isDelayAsked_ = false;
            const auto index = descriptorIndexIn(values);
            if (!index || descriptors == nullptr) return;
            releaseDelayLock();
            // None for a place that the list does not have.
            if (*index >= 0 && *index < g_unix_fd_list_get_length(descriptors))
                delayLock_ = g_unix_fd_list_get(descriptors, *index, nullptr);
            // Too late: the sleep that it was to delay has begun meanwhile.
            if (isAsleep_) releaseDelayLock();
            changed();
        });
}

void LoginManager::releaseDelayLock() {
    if (delayLock_ >= 0) close(std::exchange(delayLock_, -1));
}

void LoginManager::findSession() {
    isSessionAsked_ = true;
    const char* identifier = std::getenv("XDG_SESSION_ID");
    if (identifier == nullptr) {
        findSessionOfProcess();
        return;
    }
    bus_.call(kManager, "GetSession", g_variant_new("(s)", identifier),
              [this](GVariant* values, GUnixFDList*) {
                  const auto path = objectPathIn(values);
                  if (path.empty()) {
                      findSessionOfProcess();
                  } else {
                      watchOwnSession(path);
                  }
              });
}

void LoginManager::findSessionOfProcess() {
    bus_.call(kManager, "GetSessionByPID", g_variant_new("(u)", static_cast<guint32>(getpid())),
              [this](GVariant* values, GUnixFDList*) {
                  const auto path = objectPathIn(values);
                  if (path.empty()) {
                      findSessionOfUser();
                  } else {
                      watchOwnSession(path);
                  }
              });
}

void LoginManager::findSessionOfUser() {
    // A service of the user's service manager belongs to no session; the one at a seat is the user's desktop.
    bus_.call(kManager, "ListSessions", nullptr, [this](GVariant* values, GUnixFDList*) {
        isSessionAsked_ = false;
        const std::string found = sessionOfUser(values, getuid());
        if (!found.empty()) watchSession(found);
    });
}

void LoginManager::watchOwnSession(const std::string& path) {
    watchSession(path);
    isOwnSession_ = true;
}

void LoginManager::watchSession(const std::string& path) {
    isSessionAsked_ = false;
    if (path == sessionPath_) return;
    sessionPath_ = path;
    isOwnSession_ = false;
    lockSignal_ = {};
    unlockSignal_ = {};
    propertiesSignal_ = {};
    setLock(false, false);
    if (path.empty()) return;

    const BusObject session{kService, path, kSessionInterface};
    lockSignal_ = bus_.subscribe(session, "Lock",
                                 [this](const std::string&, GVariant*) { setLock(true, isLockHinted_); });
    unlockSignal_ =
        bus_.subscribe(session, "Unlock", [this](const std::string&, GVariant*) { setLock(false, false); });
    const auto readHint = [this, session] {
        bus_.getBoolean(session, kLockedHint, [this, path = session.path](std::optional<bool> isLocked) {
            if (path == sessionPath_ && isLocked) setLockHint(*isLocked);
        });
    };
    // The signal's own value: a question would be answered too late for a hint that is taken back at once.
    propertiesSignal_ =
        bus_.subscribe({kService, path, "org.freedesktop.DBus.Properties"}, "PropertiesChanged",
                       [this, readHint](const std::string&, GVariant* values) {
                           if (const auto isLocked = changedBooleanIn(values, kLockedHint))
                               setLockHint(*isLocked);
                           else
                               readHint();
                       });
    readHint();
    changed();
}

void LoginManager::forgetLockRequest() { setLock(false, isLockHinted_); }

void LoginManager::setLockHint(bool isLocked) {
    // The hint taken back also answers the request.
    if (isLocked != isLockHinted_) setLock(isLockRequested_ && isLocked, isLocked);
}

void LoginManager::setLock(bool isRequested, bool isHinted) {
    if (isRequested == isLockRequested_ && isHinted == isLockHinted_) return;
    isLockRequested_ = isRequested;
    isLockHinted_ = isHinted;
    changed();
}

void LoginManager::changed() {
    if (onChanged) onChanged();
}

}  // namespace orvane
