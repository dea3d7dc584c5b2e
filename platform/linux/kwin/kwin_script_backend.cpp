#include "platform/linux/kwin/kwin_script_backend.h"

#include <algorithm>
#include <utility>

#include "platform/linux/session/reply_values.h"
#ifdef ORVANE_HAS_PLASMA_PROTOCOLS
#include "platform/linux/wayland/plasma_window_backend.h"
#endif

namespace orvane {

namespace {

const BusObject kKWin{"org.kde.KWin", "/KWin", "org.kde.KWin"};

// Offered to everybody, and by no other compositor.
constexpr const char* kKWinInterface = "org_kde_plasma_shell";

constexpr unsigned kFirstRetryMilliseconds = 500;
constexpr unsigned kLastRetryMilliseconds = 60'000;

bool isPermission([[maybe_unused]] const WaylandGlobal& global) {
#ifdef ORVANE_HAS_PLASMA_PROTOCOLS
    return PlasmaWindowBackend::isUsable(global);
#else
    return false;
#endif
}

}  // namespace

KWinScriptBackend::KWinScriptBackend(SharedBus& bus, WaylandDisplay& display)
    : sharedBus_(bus), display_(display), retryMilliseconds_(kFirstRetryMilliseconds) {
    bus.add(*this);
    display.add(*this);
}

bool KWinScriptBackend::isWanted() const {
    return isKWinOnBus_ && display_.answers() && isKWinCompositor_ && !hasPermission_;
}

bool KWinScriptBackend::isDecided() const {
    if (!display_.isDecided()) return false;
    if (!isKWinCompositor_ || hasPermission_) return true;
    if (bus_ == nullptr) return sharedBus_.isDecided();
    return isNameDecided_ && (!isWanted() || hasFailed_ || isAvailable());
}

void KWinScriptBackend::busOpened(BusConnection& bus) {
    bus_ = &bus;
    desktopShownSignal_ =
        bus.subscribe(kKWin, "showingDesktopChanged", [this](const std::string&, GVariant* values) {
            isDesktopShown_ = booleanIn(values).value_or(false);
            tell();
        });
    nameWatch_ = bus.watchName(kKWin.service, [this](bool isOwned) {
        isNameDecided_ = true;
        isKWinOnBus_ = isOwned;
        // Another KWin than before knows nothing of a script.
        script_.reset();
        update();
    });
}

void KWinScriptBackend::busClosed() {
    nameWatch_ = {};
    desktopShownSignal_ = {};
    isKWinOnBus_ = false;
    isNameDecided_ = false;
    update();
    bus_ = nullptr;
}

void KWinScriptBackend::globalAdded(const WaylandGlobal& global) {
    if (global.interface == kKWinInterface) isKWinCompositor_ = true;
    if (isPermission(global)) hasPermission_ = true;
}

void KWinScriptBackend::compositorLost() {
    isKWinCompositor_ = false;
    hasPermission_ = false;
    update();
}

void KWinScriptBackend::update() {
    if (isWanted() && script_) return;
    retryTimer_.cancel();
    retryMilliseconds_ = kFirstRetryMilliseconds;
    script_.reset();
    report_.reset();
    isDesktopShown_ = false;
    hasFailed_ = false;
    if (isWanted()) start();
    // Later, when the display too knows how it stands.
    noticeTimer_.start(0, [this] { tell(); });
}

void KWinScriptBackend::start() {
    bus_->getBoolean(kKWin, "showingDesktop", [this](std::optional<bool> isShown) {
        isDesktopShown_ = isShown.value_or(false);
        tell();
    });
    script_ = std::make_unique<KWinScript>(*bus_);
    script_->onReport = [this](const std::string& text) { reported(text); };
    script_->onFailed = [this] { failed(); };
    script_->load();
}

void KWinScriptBackend::failed() {
    hasFailed_ = true;
    script_.reset();
    retryTimer_.start(retryMilliseconds_, [this] { start(); });
    retryMilliseconds_ = std::min(2 * retryMilliseconds_, kLastRetryMilliseconds);
    if (onAvailabilityChanged) {
        // The shortcoming is another one.
        onAvailabilityChanged(isAvailable());
    }
}

void KWinScriptBackend::reported(const std::string& text) {
    auto report = KWinReport::parse(text);
    if (!report) return;
    hasFailed_ = false;
    retryMilliseconds_ = kFirstRetryMilliseconds;
    std::map<std::string, std::int64_t> numbers;
    for (auto& window : report->windows) {
        const auto known = numbers_.find(window.identifier);
        window.description.number = known != numbers_.end() ? known->second : ++lastNumber_;
        numbers[window.identifier] = window.description.number;
    }
    numbers_ = std::move(numbers);
    report_ = std::move(report);
    tell();
}

void KWinScriptBackend::tell() {
    const auto window = activeWindow();
    const auto active = window ? window->number : 0;
    const bool isOther = std::exchange(toldActive_, active) != active;
    const bool available = isAvailable();
    if (std::exchange(toldAvailable_, available) != available && onAvailabilityChanged) {
        onAvailabilityChanged(available);
    }
    if (isOther && onActiveWindowChanged) onActiveWindowChanged();
}

std::optional<DesktopWindow> KWinScriptBackend::activeWindow() {
    if (!report_ || isDesktopShown_) return std::nullopt;
    for (const auto& window : report_->windows) {
        if (window.identifier == report_->active) return window.description;
    }
    return std::nullopt;
}

std::vector<DesktopWindow> KWinScriptBackend::windows() {
    std::vector<DesktopWindow> result;
    if (!report_ || isDesktopShown_) return result;
    for (const auto& window : report_->windows) result.push_back(window.description);
    return result;
}

std::optional<Shortcoming> KWinScriptBackend::shortcoming() const {
    if (!isKWinCompositor_ || hasPermission_ || isAvailable()) return std::nullopt;
    return Shortcoming{isKWinOnBus_
                           ? "KWin tells its windows only to programs with permission, and ran no script"
                           : "KWin tells its windows only to programs with permission, and is not on the bus",
                       "orvane setup kwin"};
}

}  // namespace orvane
