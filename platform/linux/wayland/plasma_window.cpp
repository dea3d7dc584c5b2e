#include "platform/linux/wayland/plasma_window.h"

#include "platform/linux/wayland/wayland_text.h"

namespace orvane {

namespace {

constexpr int kBelowLayer = -1;
constexpr int kFloatingLayer = 3;
constexpr int kDockLayer = 20;

PlasmaWindow& windowOf(void* self) { return *static_cast<PlasmaWindow*>(self); }

}  // namespace

// Made like this and not by naming all members: newer releases of the protocols have more of them.
const org_kde_plasma_window_listener PlasmaWindow::kListener = [] {
    using Handle = org_kde_plasma_window;
    org_kde_plasma_window_listener listener{};
    listener.title_changed = [](void* self, Handle*, const char* title) {
        windowOf(self).title_ = waylandText(title);
        windowOf(self).changed();
    };
    listener.app_id_changed = [](void* self, Handle*, const char* identifier) {
        windowOf(self).applicationIdentifier_ = waylandText(identifier);
        windowOf(self).changed();
    };
    listener.pid_changed = [](void* self, Handle*, std::uint32_t process) {
        windowOf(self).processIdentifier_ = static_cast<std::int32_t>(process);
        windowOf(self).changed();
    };
    listener.state_changed = [](void* self, Handle*, std::uint32_t states) {
        windowOf(self).states_ = states;
        windowOf(self).changed();
    };
    listener.virtual_desktop_entered = [](void* self, Handle*, const char* desktop) {
        windowOf(self).desktops_.insert(desktop);
        windowOf(self).changed();
    };
    listener.virtual_desktop_left = [](void* self, Handle*, const char* desktop) {
        windowOf(self).desktops_.erase(desktop);
        windowOf(self).changed();
    };
    listener.initial_state = [](void* self, Handle*) {
        windowOf(self).isDescribed_ = true;
        windowOf(self).changed();
    };
    listener.unmapped = [](void* self, Handle*) {
        // Copied, since the call may destroy the window.
        const auto onClosed = windowOf(self).onClosed;
        if (onClosed) onClosed();
    };
    listener.virtual_desktop_changed = [](void*, Handle*, std::int32_t) {};
    listener.themed_icon_name_changed = [](void*, Handle*, const char*) {};
    listener.parent_window = [](void*, Handle*, Handle*) {};
    listener.geometry = [](void*, Handle*, std::int32_t, std::int32_t, std::uint32_t, std::uint32_t) {};
    listener.icon_changed = [](void*, Handle*) {};
    listener.application_menu = [](void*, Handle*, const char*, const char*) {};
    return listener;
}();

PlasmaWindow::PlasmaWindow(org_kde_plasma_window* handle, std::int64_t number)
    : handle_(handle), number_(number) {
    org_kde_plasma_window_add_listener(handle, &kListener, this);
}

void PlasmaWindow::changed() const {
    if (isDescribed_ && onChanged) onChanged();
}

bool PlasmaWindow::isActive() const { return has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE); }

bool PlasmaWindow::isOnScreen(const std::string& currentDesktop) const {
    if (!isDescribed_ || has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_MINIMIZED)) return false;
    return currentDesktop.empty() || desktops_.empty() || desktops_.count(currentDesktop) != 0 ||
           has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ON_ALL_DESKTOPS);
}

int PlasmaWindow::layer() const {
    if (has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_KEEP_BELOW)) return kBelowLayer;
    // The protocol tells no types of windows. Only parts of the desktop itself are in neither list.
    if (has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_SKIPTASKBAR) &&
        has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_SKIPSWITCHER)) {
        return kDockLayer;
    }
    return has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_KEEP_ABOVE) ? kFloatingLayer : 0;
}

DesktopWindow PlasmaWindow::describe() const {
    DesktopWindow window;
    window.number = number_;
    window.processIdentifier = processIdentifier_;
    window.layer = layer();
    if (!title_.empty()) window.title = title_;
    window.windowClass = applicationIdentifier_;
    return window;
}

}  // namespace orvane
