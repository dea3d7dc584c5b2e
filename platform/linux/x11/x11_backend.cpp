#include "platform/linux/x11/x11_backend.h"

#include <xcb/dpms.h>
#include <xcb/screensaver.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "platform/linux/x11/x11_window_query.h"

namespace orvane {

namespace {

constexpr std::chrono::milliseconds kFirstWait{1000};
constexpr unsigned kFirstRetryMilliseconds = 500;
constexpr unsigned kLastRetryMilliseconds = 5000;
// A switch between two windows passes through "none" for a few milliseconds.
constexpr unsigned kSettleMilliseconds = 100;
// The server announces neither that monitors go off nor that they come back. The first is seen when the
// backend is asked; for the second somebody has to look, since nobody asks while the screens sleep.
constexpr unsigned kWakeLookMilliseconds = 2000;

void selectEvents(X11Connection& connection, xcb_window_t window, std::uint32_t events) {
    // An error, such as a window that is gone, arrives as an event and is passed over there.
    xcb_change_window_attributes(connection.get(), window, XCB_CW_EVENT_MASK, &events);
}

}  // namespace

std::string X11Backend::displayFromEnvironment() {
    const char* display = std::getenv("DISPLAY");
    return display != nullptr ? display : "";
}

std::optional<bool> X11Backend::screensAreOff(X11Connection& connection) {
    if (!connection.hasScreenPower()) return std::nullopt;
    const auto info = X11Request<xcb_dpms_info_reply_t>(connection, xcb_dpms_info(connection.get())).get();
    if (!info) return std::nullopt;
    return info->state != 0 && info->power_level != XCB_DPMS_DPMS_MODE_ON;
}

X11Backend::X11Backend(std::string display, ScreenPowerReader screenPower)
    : display_(std::move(display)),
      screenPower_(std::move(screenPower)),
      connector_(display_),
      retryMilliseconds_(kFirstRetryMilliseconds) {
    if (display_.empty()) return;
    tryAgain();
    std::unique_ptr<X11Connection> connection;
    if (connector_.wait(kFirstWait, connection)) adopt(std::move(connection));
    // Whoever makes a backend looks at it himself.
    notices_ = {};
    noticeTimer_.cancel();
    if (isAsleep_) deliverSoon();
}

X11Backend::~X11Backend() { *isAlive_ = false; }

std::string X11Backend::name() const { return "X11 (xcb)"; }

bool X11Backend::isAvailable() const { return connection_ != nullptr && !connection_->isBroken(); }

void X11Backend::tryAgain() {
    connector_.connect([this](std::unique_ptr<X11Connection> connection) { adopt(std::move(connection)); });
}

void X11Backend::adopt(std::unique_ptr<X11Connection> connection) {
    if (!connection) {
        const auto wait = retryMilliseconds_;
        retryMilliseconds_ = std::min(2 * retryMilliseconds_, kLastRetryMilliseconds);
        retryTimer_.start(wait, [this] { tryAgain(); });
        return;
    }
    retryMilliseconds_ = kFirstRetryMilliseconds;
    connection_ = std::move(connection);
    events_ = std::make_unique<X11EventSource>(*connection_, [this] { handleEvents(); });
    selectEvents(*connection_, connection_->root(), XCB_EVENT_MASK_PROPERTY_CHANGE);
    if (connection_->screenSaverEvent()) {
        xcb_screensaver_select_input(connection_->get(), connection_->root(),
                                     XCB_SCREENSAVER_EVENT_NOTIFY_MASK);
    }
    notices_.available = true;
    acceptActiveWindow(readActiveWindow());
    readScreenSaver();
    readScreenPower();
    deliverSoon();
}

void X11Backend::lose() {
    events_.reset();
    connection_.reset();
    settleTimer_.cancel();
    wakeTimer_.cancel();
    isUnsettled_ = false;
    windowManager_ = XCB_WINDOW_NONE;
    saverRuns_ = screensOff_ = false;
    updateSleep();
    if (std::exchange(activeWindow_, XCB_WINDOW_NONE) != XCB_WINDOW_NONE) notices_.activeWindow = true;
    notices_.available = false;
    retryTimer_.start(retryMilliseconds_, [this] { tryAgain(); });
}

void X11Backend::handleEvents() {
    connection_->serverSpoke();
    while (const auto event = events_->next()) handle(*event);
    if (connection_->isBroken()) {
        lose();
    } else if (isUnsettled_) {
        settle();
    }
    deliver();
}

void X11Backend::handle(const xcb_generic_event_t& event) {
    const auto type = static_cast<std::uint8_t>(event.response_type & 0x7F);
    const auto& atoms = connection_->atoms();
    if (type == XCB_PROPERTY_NOTIFY) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.window == connection_->root() && (change.atom == atoms[X11Atom::netActiveWindow] ||
                                                     change.atom == atoms[X11Atom::netSupportingWmCheck])) {
            isUnsettled_ = true;
        }
    } else if (type == XCB_DESTROY_NOTIFY) {
        const auto& destroyed = reinterpret_cast<const xcb_destroy_notify_event_t&>(event);
        if (destroyed.window == windowManager_) isUnsettled_ = true;
        if (destroyed.window == activeWindow_) settleLater();
    } else if (type == XCB_UNMAP_NOTIFY) {
        // Whether it was minimized is said a little later.
        const auto& unmapped = reinterpret_cast<const xcb_unmap_notify_event_t&>(event);
        if (unmapped.window == activeWindow_) settleLater();
    } else if (type == connection_->screenSaverEvent()) {
        const auto& saver = reinterpret_cast<const xcb_screensaver_notify_event_t&>(event);
        saverRuns_ = saver.state == XCB_SCREENSAVER_STATE_ON || saver.state == XCB_SCREENSAVER_STATE_CYCLE;
        readScreenPower();
        updateSleep();
    }
}

void X11Backend::settle() {
    isUnsettled_ = false;
    const auto window = readActiveWindow();
    if (window != XCB_WINDOW_NONE) {
        acceptActiveWindow(window);
    } else if (activeWindow_ != XCB_WINDOW_NONE) {
        settleLater();
    }
}

void X11Backend::settleLater() {
    if (settleTimer_.isPending()) return;
    settleTimer_.start(kSettleMilliseconds, [this] {
        acceptActiveWindow(readActiveWindow());
        deliver();
    });
}

void X11Backend::acceptActiveWindow(xcb_window_t window) {
    settleTimer_.cancel();
    if (window == activeWindow_) return;
    // Some window managers let the property be when the last window is closed or minimized.
    if (activeWindow_ != XCB_WINDOW_NONE) selectEvents(*connection_, activeWindow_, XCB_EVENT_MASK_NO_EVENT);
    if (window != XCB_WINDOW_NONE) selectEvents(*connection_, window, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    activeWindow_ = window;
    notices_.activeWindow = true;
}

xcb_window_t X11Backend::readActiveWindow() {
    X11PropertyRequest active(*connection_, connection_->root(), X11Atom::netActiveWindow);
    // The property outlives a window manager that died.
    if (!windowManagerRuns()) return XCB_WINDOW_NONE;
    const auto window = active.get().firstWord(XCB_WINDOW_NONE);
    if (window == XCB_WINDOW_NONE) return XCB_WINDOW_NONE;
    const auto state = X11PropertyRequest(*connection_, window, X11Atom::netWmState).get();
    const auto states = state.words();
    const auto hidden = connection_->atoms()[X11Atom::netWmStateHidden];
    const bool isThere =
        state.isAnswered() && std::find(states.begin(), states.end(), hidden) == states.end();
    return isThere ? window : xcb_window_t{XCB_WINDOW_NONE};
}

bool X11Backend::windowManagerRuns() {
    const auto check = X11PropertyRequest(*connection_, connection_->root(), X11Atom::netSupportingWmCheck)
                           .get()
                           .firstWord(XCB_WINDOW_NONE);
    if (check != windowManager_) {
        windowManager_ = check;
        // Tells when the window manager ends: it takes this window with it.
        if (check != XCB_WINDOW_NONE) selectEvents(*connection_, check, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    }
    if (check == XCB_WINDOW_NONE) return false;
    // The window names itself, so that one of another program with the same number is not mistaken for it.
    return X11PropertyRequest(*connection_, check, X11Atom::netSupportingWmCheck)
               .get()
               .firstWord(XCB_WINDOW_NONE) == check;
}

std::optional<DesktopWindow> X11Backend::activeWindow() {
    if (!isAvailable()) return std::nullopt;
    readScreenPower();
    auto window = readActiveWindow();
    // The notice of this change waits in the queue or its timer runs; either will settle it.
    if (window == XCB_WINDOW_NONE && windowManagerRuns()) window = activeWindow_;
    if (window == XCB_WINDOW_NONE) return std::nullopt;
    if (isTelling_) {
        // Whoever was just told looks, and sees a newer change: a return from it would need a notice too.
        acceptActiveWindow(window);
        notices_.activeWindow = false;
    }
    auto facts = X11WindowQuery(*connection_, window).get();
    if (!facts) return std::nullopt;
    return std::move(facts->window);
}

std::vector<DesktopWindow> X11Backend::windows() {
    std::vector<DesktopWindow> result;
    if (!isAvailable() || !windowManagerRuns()) return result;
    const auto root = connection_->root();
    X11PropertyRequest stackingRequest(*connection_, root, X11Atom::netClientListStacking);
    X11PropertyRequest listRequest(*connection_, root, X11Atom::netClientList);
    X11PropertyRequest desktopRequest(*connection_, root, X11Atom::netCurrentDesktop);
    const auto stacking = stackingRequest.get();
    const auto list = listRequest.get();
    const auto numbers = stacking.isSet() ? stacking.words() : list.words();
    const auto currentDesktop = desktopRequest.get();

    std::vector<X11WindowQuery> queries;
    queries.reserve(numbers.size());
    // The property lists them from the bottom to the top.
    for (auto number = numbers.rbegin(); number != numbers.rend(); ++number) {
        queries.emplace_back(*connection_, *number);
    }
    for (auto& query : queries) {
        auto facts = query.get();
        if (!facts || facts->isMinimized || facts->isDesktopElement) continue;
        if (facts->desktop && currentDesktop.isSet() && *facts->desktop != currentDesktop.firstWord(0))
            continue;
        result.push_back(std::move(facts->window));
    }
    return result;
}

std::optional<double> X11Backend::idleSeconds() {
    if (!isAvailable()) return std::nullopt;
    readScreenPower();
    if (!connection_->screenSaverEvent()) return std::nullopt;
    const auto info = X11Request<xcb_screensaver_query_info_reply_t>(
                          *connection_, xcb_screensaver_query_info(connection_->get(), connection_->root()))
                          .get();
    if (!info) return std::nullopt;
    return info->ms_since_user_input / 1000.0;
}

void X11Backend::readScreenSaver() {
    if (!connection_->screenSaverEvent()) return;
    const auto info = X11Request<xcb_screensaver_query_info_reply_t>(
                          *connection_, xcb_screensaver_query_info(connection_->get(), connection_->root()))
                          .get();
    saverRuns_ = info && info->state == XCB_SCREENSAVER_STATE_ON;
    updateSleep();
}

void X11Backend::readScreenPower() {
    if (!screenPower_) return;
    screensOff_ = screenPower_(*connection_).value_or(false);
    updateSleep();
    if (screensOff_ && !wakeTimer_.isPending()) {
        wakeTimer_.start(kWakeLookMilliseconds, [this] { readScreenPower(); });
    }
}

void X11Backend::updateSleep() {
    const bool asleep = saverRuns_ || screensOff_;
    if (std::exchange(isAsleep_, asleep) != asleep) deliverSoon();
}

void X11Backend::deliverSoon() {
    if (!noticeTimer_.isPending()) noticeTimer_.start(0, [this] { deliver(); });
}

void X11Backend::deliver() {
    noticeTimer_.cancel();
    const auto notices = std::exchange(notices_, {});
    const auto isAlive = isAlive_;
    if (notices.available && onAvailabilityChanged) onAvailabilityChanged(*notices.available);
    if (*isAlive && std::exchange(toldAsleep_, isAsleep_) != isAsleep_ && onScreenSleepChanged) {
        onScreenSleepChanged(isAsleep_);
    }
    if (!*isAlive || !notices.activeWindow || !onActiveWindowChanged) return;
    isTelling_ = true;
    onActiveWindowChanged();
    if (*isAlive) isTelling_ = false;
}

}  // namespace orvane
