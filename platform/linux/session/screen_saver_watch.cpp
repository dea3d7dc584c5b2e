#include "platform/linux/session/screen_saver_watch.h"

#include <utility>

#include "platform/linux/session/reply_values.h"

namespace orvane {

ScreenSaverWatch::ScreenSaverWatch(BusConnection& bus, const std::string& service, const std::string& path)
    : bus_(bus), saver_{service, path, service} {
    activeSignal_ =
        bus_.subscribe({service, "", service}, "ActiveChanged", [this](const std::string&, GVariant* values) {
            if (const auto isActive = booleanIn(values)) setActive(*isActive);
        });
    nameWatch_ = bus_.watchName(service, [this](bool isOwned) { setOwned(isOwned); });
}

void ScreenSaverWatch::setOwned(bool isOwned) {
    isAvailable_ = isOwned;
    if (isOwned) {
        bus_.call(saver_, "GetActive", nullptr, [this](GVariant* values, GUnixFDList*) {
            if (const auto isActive = booleanIn(values)) setActive(*isActive);
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
