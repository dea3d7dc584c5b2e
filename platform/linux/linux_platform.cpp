#include "platform/linux/linux_platform.h"

#include "platform/linux/accessibility/accessibility_backend.h"
#include "platform/linux/accessibility/atspi_accessibility.h"
#include "platform/linux/desktop_choice.h"
#include "platform/linux/desktop_diagnosis.h"
#include "platform/linux/gnome/gnome_backend.h"
#include "platform/linux/gnome/mutter_idle_source.h"
#include "platform/linux/gnome/mutter_screen_power.h"
#include "platform/linux/session/session_monitor.h"
#include "platform/linux/session/shared_bus.h"
#include "platform/linux/sway/sway_backend.h"
#ifdef ORVANE_HAS_WAYLAND
#include "platform/linux/kwin/kwin_script_backend.h"
#include "platform/linux/wayland/ext_idle_source.h"
#include "platform/linux/wayland/foreign_toplevel_backend.h"
#ifdef ORVANE_HAS_PLASMA_PROTOCOLS
#include "platform/linux/kwin/kwin_screen_power.h"
#include "platform/linux/kwin/plasma_backend.h"
#include "platform/linux/wayland/kde_idle_source.h"
#endif
#include "platform/linux/wayland/wayland_display.h"
#include "platform/linux/wayland/wlr_screen_power.h"
#endif
#ifdef ORVANE_HAS_X11
#include "platform/linux/x11/x11_backend.h"
#endif

namespace orvane {

LinuxPlatform::LinuxPlatform() = default;

LinuxPlatform::~LinuxPlatform() = default;

void LinuxPlatform::connect() {
    if (session_) return;
    session_ = std::make_unique<SessionMonitor>();
    desktopBus_ = std::make_unique<SharedBus>(BusLink::sessionBusAddress());
    accessibilityBus_ = std::make_unique<AccessibilityBus>(*desktopBus_);
    accessibility_ = std::make_unique<AtspiAccessibility>(*accessibilityBus_);
    desktop_ = std::make_unique<DesktopChoice>();
#ifdef ORVANE_HAS_WAYLAND
    waylandDisplay_ = std::make_unique<WaylandDisplay>();
    waylandDisplay_->onAnswersChanged = [this](bool answers) { desktop_->setCompositorAnswers(answers); };
#endif
    addWindowBackends();
    addIdleSources();
    addScreenPowerSources();
#ifdef ORVANE_HAS_WAYLAND
    waylandDisplay_->start();
    // One that is slow to answer is no reason to start the X server for the X11 programs on it.
    desktop_->setCompositorAnswers(waylandDisplay_->answers() || !waylandDisplay_->isDecided());
#endif
    desktop_->start();
    desktopBus_->open();
    workspace_.setBackend(desktop_.get());
    windowServer_.setBackend(desktop_.get());
    workspace_.onUserSeen = [this] { session_->userIsBack(); };

    session_->onSleep = [this](bool asleep) { workspace_.setSystemSleeping(asleep); };
    session_->onLock = [this](bool locked) { workspace_.setLocked(locked); };
    session_->onEnd = [this] {
        defaultNotificationCenter().post(NSApplicationWillTerminateNotification, &hostApplication_);
    };
    desktop_->onChoiceChanged = [this] { healthMayHaveChanged(); };
    session_->onStatusChanged = [this] { healthMayHaveChanged(); };
    session_->start();
    toldHealth_ = withoutSights(desktopHealth());
}

std::vector<ServiceHealth> LinuxPlatform::desktopHealth() {
    connect();
    return diagnoseDesktop(*desktop_, workspace_, *session_);
}

void LinuxPlatform::healthMayHaveChanged() {
    if (healthTimer_.isPending()) return;
    healthTimer_.start(0, [this] {
        auto health = withoutSights(desktopHealth());
        if (health == toldHealth_) return;
        toldHealth_ = std::move(health);
        defaultNotificationCenter().post(DesktopHealthDidChangeNotification, this);
    });
}

void LinuxPlatform::addWindowBackends() {
    desktop_->add(std::make_unique<SwayBackend>());
    desktop_->add(std::make_unique<GnomeBackend>(*desktopBus_));
#ifdef ORVANE_HAS_WAYLAND
#ifdef ORVANE_HAS_PLASMA_PROTOCOLS
    desktop_->add(std::make_unique<PlasmaBackend>(*waylandDisplay_));
#endif
    desktop_->add(std::make_unique<KwinScriptBackend>(*desktopBus_, *waylandDisplay_));
    desktop_->add(std::make_unique<ForeignToplevelBackend>(*waylandDisplay_));
#endif
#ifdef ORVANE_HAS_X11
    desktop_->addForNoCompositor([] { return std::make_unique<X11Backend>(); });
#endif
    desktop_->add(std::make_unique<AccessibilityBackend>(*desktopBus_, *accessibilityBus_));
}

void LinuxPlatform::addIdleSources() {
    const bool heldBack = userDefaults_.boolForKey(idleHeldBackByInhibitorsDefault);
#ifdef ORVANE_HAS_WAYLAND
    desktop_->add(std::make_unique<ExtIdleSource>(*waylandDisplay_, heldBack));
#ifdef ORVANE_HAS_PLASMA_PROTOCOLS
    desktop_->add(std::make_unique<KdeIdleSource>(*waylandDisplay_));
#endif
#endif
    desktop_->add(std::make_unique<MutterIdleSource>(*desktopBus_, heldBack));
}

void LinuxPlatform::addScreenPowerSources() {
#ifdef ORVANE_HAS_WAYLAND
    desktop_->add(std::make_unique<WlrScreenPower>(*waylandDisplay_));
#ifdef ORVANE_HAS_PLASMA_PROTOCOLS
    desktop_->add(std::make_unique<KwinScreenPower>(*waylandDisplay_));
#endif
#endif
    desktop_->add(std::make_unique<MutterScreenPower>(*desktopBus_));
}

LinuxWorkspace& LinuxPlatform::workspace() {
    connect();
    return workspace_;
}

LinuxWindowServer& LinuxPlatform::windowServer() {
    connect();
    return windowServer_;
}

Accessibility& LinuxPlatform::accessibility() {
    connect();
    return *accessibility_;
}

DesktopChoice& LinuxPlatform::desktop() {
    connect();
    return *desktop_;
}

SessionMonitor& LinuxPlatform::session() {
    connect();
    return *session_;
}

std::shared_ptr<Platform> makeLinuxPlatform() { return std::make_shared<LinuxPlatform>(); }

}  // namespace orvane
