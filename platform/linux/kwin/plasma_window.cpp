#include "platform/linux/kwin/plasma_window.h"

#include <glib.h>

#include <memory>

#include "platform/linux/desktop_backend.h"

namespace orvane {

namespace {

using Handle = org_kde_plasma_window;

PlasmaWindow& windowOf(void* self) { return *static_cast<PlasmaWindow*>(self); }

std::string validText(const char* text) {
    const std::unique_ptr<char, decltype(&g_free)> valid(g_utf8_make_valid(text, -1), g_free);
    return valid.get();
}

}  // namespace

// Member by member: newer protocols have more events, which are never sent to what was bound in an older
// version.
const org_kde_plasma_window_listener PlasmaWindow::kListener = [] {
    org_kde_plasma_window_listener listener{};
    listener.title_changed = [](void* self, Handle*, const char* title) {
        auto& window = windowOf(self);
        window.title_ = validText(title);
        if (window.title_->empty()) window.title_.reset();
        window.changed();
    };
    listener.app_id_changed = [](void* self, Handle*, const char* identifier) {
        windowOf(self).applicationIdentifier_ = validText(identifier);
        windowOf(self).changed();
    };
    listener.state_changed = [](void* self, Handle*, std::uint32_t states) {
        windowOf(self).states_ = states;
        windowOf(self).changed();
    };
    listener.virtual_desktop_changed = [](void*, Handle*, std::int32_t) {};
    listener.themed_icon_name_changed = [](void*, Handle*, const char*) {};
    listener.unmapped = [](void* self, Handle*) {
        // Copied, since the call may destroy the window.
        const auto handler = windowOf(self).onClosed;
        if (handler) handler();
    };
    listener.initial_state = [](void* self, Handle*) {
        windowOf(self).isDescribed_ = true;
        windowOf(self).changed();
    };
    listener.parent_window = [](void*, Handle*, Handle*) {};
    listener.geometry = [](void*, Handle*, std::int32_t, std::int32_t, std::uint32_t, std::uint32_t) {};
    listener.icon_changed = [](void*, Handle*) {};
    listener.pid_changed = [](void* self, Handle*, std::uint32_t process) {
        windowOf(self).processIdentifier_ = static_cast<std::int32_t>(process);
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
    listener.application_menu = [](void*, Handle*, const char*, const char*) {};
    return listener;
}();

PlasmaWindow::PlasmaWindow(Handle* handle, std::int64_t number) : handle_(handle), number_(number) {
    org_kde_plasma_window_add_listener(handle, &kListener, this);
}

int PlasmaWindow::layer() const {
    // Panels, notices and the desktop itself are in neither list; a dialog may be missing in one.
    if (has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_SKIPTASKBAR) &&
        has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_SKIPSWITCHER))
        return WindowLayer::dock;
    if (has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_KEEP_ABOVE)) return WindowLayer::floating;
    return has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_KEEP_BELOW) ? WindowLayer::below : WindowLayer::normal;
}

void PlasmaWindow::changed() {
    if (isDescribed_ && onChanged) onChanged();
}

}  // namespace orvane
