#include "platform/linux/session/session_monitor.h"

#include <algorithm>
#include <array>
#include <utility>

namespace orvane {

namespace {

struct KnownSaver {
    const char* service;
    const char* path;
};

// Each service's interface has the same name as the service. KDE answers at the first one's path too.
constexpr std::array kSavers{
    KnownSaver{"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver"},
    KnownSaver{"org.gnome.ScreenSaver", "/org/gnome/ScreenSaver"},
    KnownSaver{"org.cinnamon.ScreenSaver", "/org/cinnamon/ScreenSaver"},
    KnownSaver{"org.mate.ScreenSaver", "/org/mate/ScreenSaver"},
    KnownSaver{"org.xfce.ScreenSaver", "/org/xfce/ScreenSaver"},
};

}  // namespace

SessionMonitor::SessionMonitor(std::string systemBusAddress, std::string sessionBusAddress)
    : systemBus_(std::move(systemBusAddress)), sessionBus_(std::move(sessionBusAddress)) {
    systemBus_.onOpened = [this](BusConnection& bus) { openedSystemBus(bus); };
    systemBus_.onClosed = [this] {
        const bool wasAsleep = login_ && login_->isAsleep();
        login_.reset();
        if (wasAsleep && onSleep) onSleep(false);
        update();
    };
    sessionBus_.onOpened = [this](BusConnection& bus) { openedSessionBus(bus); };
    sessionBus_.onClosed = [this] {
        savers_.clear();
        update();
    };
}

SessionMonitor::~SessionMonitor() = default;

void SessionMonitor::start() {
    systemBus_.open();
    sessionBus_.open();
}

void SessionMonitor::openedSystemBus(BusConnection& bus) {
    login_ = std::make_unique<LoginManager>(bus);
    login_->onSleep = [this](bool asleep) {
        if (onSleep) onSleep(asleep);
    };
    login_->onShutdown = login_->onLogout = [this] {
        if (onEnd) onEnd();
    };
    login_->onChanged = [this] { update(); };
}

void SessionMonitor::openedSessionBus(BusConnection& bus) {
    for (const auto& saver : kSavers) {
        auto& watch =
            *savers_.emplace_back(std::make_unique<ScreenSaverWatch>(bus, saver.service, saver.path));
        watch.onChanged = [this, &watch, wasActive = false]() mutable {
            // A locker that gave the screen back has answered the request to lock.
            if (std::exchange(wasActive, watch.isActive()) && !watch.isActive()) userIsBack();
            update();
        };
    }
}

void SessionMonitor::update() {
    const bool isLocked =
        (login_ && login_->isLocked()) ||
        std::any_of(savers_.begin(), savers_.end(), [](auto& saver) { return saver->isActive(); });
    if (std::exchange(isLocked_, isLocked) != isLocked && onLock) onLock(isLocked);
    if (onStatusChanged) onStatusChanged();
}

void SessionMonitor::userIsBack() {
    if (login_) login_->forgetLockRequest();
}

bool SessionMonitor::isDecided() const {
    const bool isSystemBusDecided = systemBus_.isDecided() && (!login_ || login_->isDecided());
    return isSystemBusDecided && sessionBus_.isDecided() &&
           std::all_of(savers_.begin(), savers_.end(),
                       [](auto& saver) { return saver->isAvailable().has_value(); });
}

std::vector<SessionService> SessionMonitor::status() const {
    std::vector<SessionService> result;
    if (!systemBus_.isOpen()) {
        result.push_back({"system bus", false, "",
                          "it cannot be reached (" + systemBus_.problem() +
                              "): sleep, shutdown and locks of the session are not told, all else works"});
    } else {
        result.push_back({"system bus", true, "", "answers"});
        result.push_back(loginStatus());
    }
    if (!sessionBus_.isOpen()) {
        result.push_back({"session bus", false, "",
                          "it cannot be reached (" + sessionBus_.problem() +
                              "): locks by the screen saver are not told, all else works"});
    } else {
        result.push_back({"session bus", true, "", "answers"});
        result.push_back(saverStatus());
    }
    return result;
}

SessionService SessionMonitor::loginStatus() const {
    SessionService login{"login manager", login_ && login_->isAvailable().value_or(false), "", ""};
    if (!login.isAvailable) {
        login.detail = "it does not answer: sleep, shutdown and locks of the session are not told";
    } else {
        login.backend = "org.freedesktop.login1";
        login.detail = login_->isSleepDelayed() || login_->isAsleep() ? "sleep is awaited"
                                                                      : "sleep is told but cannot be delayed";
        login.detail += login_->sessionPath().empty() ? ", no session of this user found for locks"
                                                      : ", locks of " + login_->sessionPath();
        if (login_->isLocked()) login.detail += ", which is locked";
    }
    return login;
}

SessionService SessionMonitor::saverStatus() const {
    SessionService saver{"screen saver", false, "", "does not run"};
    for (const auto& watch : savers_) {
        if (!watch->isAvailable().value_or(false)) continue;
        saver.backend += (saver.isAvailable ? ", " : "") + watch->service();
        if (watch->isActive()) saver.detail = "runs or locks the screen";
        saver.isAvailable = true;
    }
    if (!saver.isAvailable) saver.detail = "no screen saver offers itself on the session bus";
    return saver;
}

}  // namespace orvane
