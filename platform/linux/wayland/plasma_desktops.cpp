#include "platform/linux/wayland/plasma_desktops.h"

#include <utility>

namespace orvane {

// Made like this and not by naming all members: newer releases of the protocols have more of them.
const org_kde_plasma_virtual_desktop_management_listener PlasmaDesktops::kListener = [] {
    using Management = org_kde_plasma_virtual_desktop_management;
    org_kde_plasma_virtual_desktop_management_listener listener{};
    listener.desktop_created = [](void* self, Management*, const char* identifier, std::uint32_t) {
        static_cast<PlasmaDesktops*>(self)->created(identifier);
    };
    listener.desktop_removed = [](void* self, Management*, const char* identifier) {
        static_cast<PlasmaDesktops*>(self)->desktops_.erase(identifier);
    };
    listener.done = [](void*, Management*) {};
    return listener;
}();

const org_kde_plasma_virtual_desktop_listener PlasmaDesktops::kDesktopListener = [] {
    using Handle = org_kde_plasma_virtual_desktop;
    org_kde_plasma_virtual_desktop_listener listener{};
    listener.desktop_id = [](void*, Handle*, const char*) {};
    listener.name = [](void*, Handle*, const char*) {};
    listener.activated = [](void* data, Handle*) {
        const auto& desktop = *static_cast<Desktop*>(data);
        auto& owner = *desktop.owner;
        owner.current_ = desktop.identifier;
        if (owner.onChanged) owner.onChanged();
    };
    listener.deactivated = [](void*, Handle*) {};
    listener.done = [](void*, Handle*) {};
    listener.removed = [](void*, Handle*) {};
    return listener;
}();

PlasmaDesktops::PlasmaDesktops(WaylandDisplay& display) : display_(display) { display.add(*this); }

void PlasmaDesktops::globalAdded(const WaylandGlobal& global) {
    const auto& interface = org_kde_plasma_virtual_desktop_management_interface;
    if (management_ || global.interface != interface.name) return;
    management_.reset(display_.bind<org_kde_plasma_virtual_desktop_management>(global, interface, 1));
    managementName_ = global.name;
    org_kde_plasma_virtual_desktop_management_add_listener(management_.get(), &kListener, this);
}

void PlasmaDesktops::globalRemoved(std::uint32_t name) {
    if (management_ && name == managementName_) drop();
}

void PlasmaDesktops::created(const char* identifier) {
    auto& desktop = desktops_[identifier];
    if (desktop) return;
    desktop = std::make_unique<Desktop>();
    desktop->owner = this;
    desktop->identifier = identifier;
    desktop->handle.reset(
        org_kde_plasma_virtual_desktop_management_get_virtual_desktop(management_.get(), identifier));
    org_kde_plasma_virtual_desktop_add_listener(desktop->handle.get(), &kDesktopListener, desktop.get());
}

void PlasmaDesktops::drop() {
    desktops_.clear();
    management_.reset();
    current_.clear();
    if (onChanged) onChanged();
}

}  // namespace orvane
