#include "platform/linux/wayland/plasma_window_backend.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace orvane {

namespace {

// From here on windows are told by identifiers that are never used twice. Later versions add nothing that is
// needed here, and the newest do without the event that tells the stacking order.
constexpr std::uint32_t kVersion = ORG_KDE_PLASMA_WINDOW_MANAGEMENT_WINDOW_WITH_UUID_SINCE_VERSION;

}  // namespace

// Made like this and not by naming all members: newer releases of the protocols have more of them.
const org_kde_plasma_window_management_listener PlasmaWindowBackend::kListener = [] {
    using Management = org_kde_plasma_window_management;
    org_kde_plasma_window_management_listener listener{};
    listener.window_with_uuid = [](void* self, Management*, std::uint32_t, const char* identifier) {
        static_cast<PlasmaWindowBackend*>(self)->added(identifier);
    };
    listener.stacking_order_uuid_changed = [](void* self, Management*, const char* identifiers) {
        static_cast<PlasmaWindowBackend*>(self)->setStacking(identifiers);
    };
    listener.show_desktop_changed = [](void* self, Management*, std::uint32_t state) {
        auto& backend = *static_cast<PlasmaWindowBackend*>(self);
        backend.isDesktopShown_ = state == ORG_KDE_PLASMA_WINDOW_MANAGEMENT_SHOW_DESKTOP_ENABLED;
        backend.noticeSoon();
    };
    listener.window = [](void*, Management*, std::uint32_t) {};
    listener.stacking_order_changed = [](void*, Management*, wl_array*) {};
    return listener;
}();

PlasmaWindowBackend::PlasmaWindowBackend(WaylandDisplay& display) : display_(display), desktops_(display) {
    display.add(*this);
    desktops_.onChanged = [this] { noticeSoon(); };
}

bool PlasmaWindowBackend::isUsable(const WaylandGlobal& global) {
    return global.interface == org_kde_plasma_window_management_interface.name && global.version >= kVersion;
}

bool PlasmaWindowBackend::isDecided() const {
    return display_.isDecided() && std::all_of(windows_.begin(), windows_.end(),
                                               [](const auto& each) { return each.second->isDescribed(); });
}

void PlasmaWindowBackend::globalAdded(const WaylandGlobal& global) {
    if (management_ || !isUsable(global)) return;
    management_.reset(display_.bind<org_kde_plasma_window_management>(
        global, org_kde_plasma_window_management_interface, kVersion));
    managementName_ = global.name;
    org_kde_plasma_window_management_add_listener(management_.get(), &kListener, this);
    noticeSoon();
}

void PlasmaWindowBackend::globalRemoved(std::uint32_t name) {
    if (management_ && name == managementName_) drop();
}

void PlasmaWindowBackend::drop() {
    windows_.clear();
    stacking_.clear();
    isDesktopShown_ = false;
    management_.reset();
    noticeSoon();
}

void PlasmaWindowBackend::added(const char* identifier) {
    auto& window = windows_[identifier];
    if (window) return;
    window = std::make_unique<PlasmaWindow>(
        org_kde_plasma_window_management_get_window_by_uuid(management_.get(), identifier), ++lastNumber_);
    window->onChanged = [this] { noticeSoon(); };
    window->onClosed = [this, key = std::string(identifier)] {
        windows_.erase(key);
        noticeSoon();
    };
}

void PlasmaWindowBackend::setStacking(const std::string& identifiers) {
    stacking_.clear();
    std::istringstream list(identifiers);
    for (std::string identifier; std::getline(list, identifier, ';');) {
        stacking_.push_back(std::move(identifier));
    }
    std::reverse(stacking_.begin(), stacking_.end());
}

bool PlasmaWindowBackend::isOnScreen(const PlasmaWindow& window) const {
    return !isDesktopShown_ && window.isOnScreen(desktops_.current());
}

const PlasmaWindow* PlasmaWindowBackend::active() const {
    const auto found = std::find_if(windows_.begin(), windows_.end(), [this](const auto& each) {
        return each.second->isActive() && isOnScreen(*each.second);
    });
    return found != windows_.end() ? found->second.get() : nullptr;
}

std::optional<DesktopWindow> PlasmaWindowBackend::activeWindow() {
    const auto* window = isAvailable() ? active() : nullptr;
    return window != nullptr ? std::optional(window->describe()) : std::nullopt;
}

std::vector<DesktopWindow> PlasmaWindowBackend::windows() {
    std::vector<DesktopWindow> result;
    if (!isAvailable()) return result;
    for (const auto& identifier : stacking_) {
        const auto found = windows_.find(identifier);
        if (found != windows_.end() && isOnScreen(*found->second)) {
            result.push_back(found->second->describe());
        }
    }
    return result;
}

void PlasmaWindowBackend::noticeSoon() {
    // A switch is told as two changes, of the former and of the new one.
    if (noticeTimer_.isPending()) return;
    noticeTimer_.start(0, [this] { tell(); });
}

void PlasmaWindowBackend::tell() {
    const bool available = isAvailable();
    const auto window = activeWindow();
    const auto number = window ? window->number : 0;
    const bool isOther = std::exchange(toldActive_, number) != number;
    if (std::exchange(toldAvailable_, available) != available && onAvailabilityChanged) {
        onAvailabilityChanged(available);
    }
    if (isOther && onActiveWindowChanged) onActiveWindowChanged();
}

}  // namespace orvane
