#include "platform/linux/gnome/mutter_screen_power.h"

#include <utility>

namespace orvane {

namespace {

constexpr const char* kService = "org.gnome.Mutter.DisplayConfig";
constexpr const char* kPath = "/org/gnome/Mutter/DisplayConfig";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

/// Whether a value of the property PowerSaveMode (0 on, 1 standby, 2 suspend, 3 off, below 0 unknown) means
/// dark screens.
std::optional<bool> isOffMode(GVariant* mode) {
    if (!g_variant_is_of_type(mode, G_VARIANT_TYPE_INT32) || g_variant_get_int32(mode) < 0)
        return std::nullopt;
    return g_variant_get_int32(mode) != 0;
}

}  // namespace

MutterScreenPower::MutterScreenPower(SharedBus& bus) { bus.add(*this); }

void MutterScreenPower::busOpened(BusConnection& bus) {
    bus_ = &bus;
    changedSignal_ = bus.subscribe({kService, kPath, kProperties}, "PropertiesChanged",
                                   [this](const std::string&, GVariant*) { ask(); });
    nameWatch_ = bus.watchName(kService, [this](bool isOwned) { owned(isOwned); });
}

void MutterScreenPower::busClosed() {
    nameWatch_ = {};
    changedSignal_ = {};
    bus_ = nullptr;
    owned(false);
}

void MutterScreenPower::owned(bool isOwned) {
    ++owner_;
    if (isOwned) {
        ask();
    } else {
        setOff(std::nullopt);
    }
}

void MutterScreenPower::ask() {
    bus_->call({kService, kPath, kProperties}, "Get", g_variant_new("(ss)", kService, "PowerSaveMode"),
               [this, owner = owner_](GVariant* values, GUnixFDList*) {
                   if (owner != owner_) return;
                   if (values == nullptr || !g_variant_is_of_type(values, G_VARIANT_TYPE("(v)")))
                       return setOff(std::nullopt);
                   GVariant* mode = nullptr;
                   g_variant_get(values, "(v)", &mode);
                   const Variant owned(mode);
                   setOff(isOffMode(mode));
               });
}

void MutterScreenPower::setOff(std::optional<bool> isOff) {
    if (std::exchange(isOff_, isOff) != isOff && onChanged) onChanged();
}

}  // namespace orvane
