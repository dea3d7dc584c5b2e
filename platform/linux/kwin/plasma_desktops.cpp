#include "platform/linux/kwin/plasma_desktops.h"

namespace orvane {

// Member by member: newer protocols have more events, which are never sent to what was bound in an older
// version.
const org_kde_plasma_virtual_desktop_management_listener PlasmaDesktops::kManagementListener = [] {
    org_kde_plasma_virtual_desktop_management_listener listener{};
    listener.desktop_created = [](void* self, Management*, const char* identifier, std::uint32_t) {
        static_cast<PlasmaDesktops*>(self)->added(identifier);
    };
    listener.desktop_removed = [](void* self, Management*, const char* identifier) {
        static_cast<PlasmaDesktops*>(self)->desktops_.erase(identifier);
    };
    listener.done = [](void*, Management*) {};
    listener.rows = [](void*, Management*, std::uint32_t) {};
    return listener;
}();

// Member by member: newer protocols have more events, which are never sent to what was bound in an older
// version.
const org_kde_plasma_virtual_desktop_listener PlasmaDesktops::kDesktopListener = [] {
    org_kde_plasma_virtual_desktop_listener listener{};
    listener.desktop_id = [](void*, Desktop*, const char*) {};
    listener.name = [](void*, Desktop*, const char*) {};
    listener.activated = &PlasmaDesktops::activated;
    listener.deactivated = [](void*, Desktop*) {};
    listener.done = [](void*, Desktop*) {};
    listener.removed = [](void*, Desktop*) {};
    return listener;
}();

PlasmaDesktops::PlasmaDesktops(WaylandDisplay& display) : display_(display) { display.add(*this); }

void PlasmaDesktops::globalAdded(const WaylandGlobal& global) {
    if (management_ || global.interface != org_kde_plasma_virtual_desktop_management_interface.name) return;
    management_.reset(
        display_.bind<Management>(global, org_kde_plasma_virtual_desktop_management_interface, 2));
    managementName_ = global.name;
    org_kde_plasma_virtual_desktop_management_add_listener(management_.get(), &kManagementListener, this);
}

void PlasmaDesktops::globalRemoved(std::uint32_t name) {
    if (management_ && name == managementName_) compositorLost();
}

void PlasmaDesktops::compositorLost() {
    desktops_.clear();
    management_.reset();
    setCurrent({});
}

void PlasmaDesktops::added(const char* identifier) {
    auto& desktop = desktops_[identifier];
    desktop.reset(
        org_kde_plasma_virtual_desktop_management_get_virtual_desktop(management_.get(), identifier));
    org_kde_plasma_virtual_desktop_add_listener(desktop.get(), &kDesktopListener, this);
}

void PlasmaDesktops::activated(void* self, Desktop* desktop) {
    auto& desktops = *static_cast<PlasmaDesktops*>(self);
    for (const auto& [identifier, each] : desktops.desktops_) {
        if (each.get() == desktop) desktops.setCurrent(identifier);
    }
}

void PlasmaDesktops::setCurrent(const std::string& identifier) {
    if (current_ == identifier) return;
    current_ = identifier;
    if (onChanged) onChanged();
}

}  // namespace orvane
