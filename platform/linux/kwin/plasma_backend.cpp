#include "platform/linux/kwin/plasma_backend.h"

#include <algorithm>
#include <sstream>

namespace orvane {

namespace {

// The first version that names windows by what is never used twice, of 2021.
constexpr std::uint32_t kVersion = 13;

}  // namespace

// Member by member: newer protocols have more events, which are never sent to what was bound in an older
// version.
const org_kde_plasma_window_management_listener PlasmaBackend::kListener = [] {
    org_kde_plasma_window_management_listener listener{};
    listener.show_desktop_changed = [](void* self, Manager*, std::uint32_t state) {
        auto& backend = *static_cast<PlasmaBackend*>(self);
        backend.isShowingDesktop_ = state == ORG_KDE_PLASMA_WINDOW_MANAGEMENT_SHOW_DESKTOP_ENABLED;
        backend.noticeSoon();
    };
    listener.window = [](void*, Manager*, std::uint32_t) {};
    listener.stacking_order_changed = [](void*, Manager*, wl_array*) {};
    listener.stacking_order_uuid_changed = [](void* self, Manager*, const char* identifiers) {
        static_cast<PlasmaBackend*>(self)->setOrder(identifiers);
    };
    listener.window_with_uuid = [](void* self, Manager*, std::uint32_t, const char* identifier) {
        static_cast<PlasmaBackend*>(self)->added(identifier);
    };
    return listener;
}();

PlasmaBackend::PlasmaBackend(WaylandDisplay& display) : display_(display), desktops_(display) {
    desktops_.onChanged = [this] { noticeSoon(); };
    display.add(*this);
}

bool PlasmaBackend::isUsable(const WaylandGlobal& global) {
    return global.interface == org_kde_plasma_window_management_interface.name && global.version >= kVersion;
}

bool PlasmaBackend::isDecided() const {
    return display_.isDecided() && !noticeTimer_.isPending() &&
           std::ranges::all_of(windows_, [](const auto& entry) { return entry.second->isDescribed(); });
}

void PlasmaBackend::globalAdded(const WaylandGlobal& global) {
    if (manager_ || !isUsable(global)) return;
    manager_.reset(display_.bind<Manager>(global, org_kde_plasma_window_management_interface, kVersion));
    managerName_ = global.name;
    org_kde_plasma_window_management_add_listener(manager_.get(), &kListener, this);
    noticeSoon();
}

void PlasmaBackend::globalRemoved(std::uint32_t name) {
    if (manager_ && name == managerName_) drop();
}

void PlasmaBackend::drop() {
    windows_.clear();
    order_.clear();
    manager_.reset();
    isShowingDesktop_ = false;
    noticeSoon();
}

void PlasmaBackend::added(const std::string& identifier) {
    auto* handle = org_kde_plasma_window_management_get_window_by_uuid(manager_.get(), identifier.c_str());
    auto& window = windows_[identifier];
    window = std::make_unique<PlasmaWindow>(handle, ++lastNumber_);
    window->onChanged = [this] { noticeSoon(); };
    window->onClosed = [this, identifier] {
        windows_.erase(identifier);
        noticeSoon();
    };
}

void PlasmaBackend::setOrder(const char* identifiers) {
    order_.clear();
    std::istringstream list(identifiers);
    for (std::string identifier; std::getline(list, identifier, ';');) order_.push_back(identifier);
}

bool PlasmaBackend::isOnScreen(const PlasmaWindow& window) const {
    return window.isDescribed() && !window.isMinimized() && !isShowingDesktop_ &&
           window.isOnDesktop(desktops_.current());
}

const PlasmaWindow* PlasmaBackend::active() const {
    const auto found = std::ranges::find_if(windows_, [this](const auto& entry) {
        return entry.second->isActive() && isOnScreen(*entry.second);
    });
    return found != windows_.end() ? found->second.get() : nullptr;
}

std::optional<DesktopWindow> PlasmaBackend::activeWindow() {
    const auto* window = isAvailable() ? active() : nullptr;
    return window != nullptr ? std::optional(describe(*window)) : std::nullopt;
}

std::vector<DesktopWindow> PlasmaBackend::windows() {
    std::vector<DesktopWindow> result;
    if (!isAvailable()) return result;
    for (auto identifier = order_.rbegin(); identifier != order_.rend(); ++identifier) {
        const auto found = windows_.find(*identifier);
        if (found != windows_.end() && isOnScreen(*found->second)) result.push_back(describe(*found->second));
    }
    return result;
}

DesktopWindow PlasmaBackend::describe(const PlasmaWindow& window) {
    DesktopWindow result;
    result.number = window.number();
    result.processIdentifier = window.processIdentifier();
    result.layer = window.layer();
    result.title = window.title();
    result.windowClass = window.applicationIdentifier();
    return result;
}

void PlasmaBackend::noticeSoon() {
    // A switch is told as two changes, of the former and of the new one.
    if (noticeTimer_.isPending()) return;
    noticeTimer_.start(0, [this] { tellNow(); });
}

void PlasmaBackend::tellNow() {
    const auto* window = isAvailable() ? active() : nullptr;
    tell(isAvailable(), window != nullptr ? window->number() : 0);
}

}  // namespace orvane
