#include "platform/linux/session/screen_saver_watch.h"

#include <utility>

namespace orvane {

namespace {

std::optional<bool> activeIn(GVariant* values) {
    if (values == nullptr || !g_variant_is_of_type(values, G_VARIANT_TYPE("(b)"))) return std::nullopt;
    gboolean isActive = FALSE;
    g_variant_get(values, "(b)", &isActive);
    return isActive != FALSE;
}

}  // namespace

ScreenSaverWatch::ScreenSaverWatch(BusConnection& bus, const std::string& service, const std::string& path)
    : bus_(bus), saver_{service, path, service} {
    activeSignal_ =
        bus_.subscribe({service, "", service}, "ActiveChanged", [this](const std::string&, GVariant* values) {
            if (const auto isActive = activeIn(values)) setActive(*isActive);
        });
    nameWatch_ = bus_.watchName(service, [this](bool isOwned) { setOwned(isOwned); });
}

void ScreenSaverWatch::setOwned(bool isOwned) {
    isAvailable_ = isOwned;
    if (isOwned) {
        bus_.call(saver_, "GetActive", nullptr, [this](GVariant* values, GUnixFDList*) {
            if (const auto isActive = activeIn(values)) setActive(*isActive);
        });
    } else {
        isActive_ = false;
    }
    if (onChanged) onChanged();
}

void ScreenSaverWatch::setActive(bool isActive) {
    if (std::exchange(isActive_, isActive) != isActive && onChanged) onChanged();
}

}  // namespace orvane
