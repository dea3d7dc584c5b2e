#include "platform/linux/desktop_backend.h"

#include <utility>

namespace orvane {

DesktopBackend::~DesktopBackend() = default;

void DesktopBackend::tell(bool available, std::int64_t active) {
    const bool isOther = std::exchange(toldActive_, active) != active;
    if (std::exchange(toldAvailable_, available) != available && onAvailabilityChanged)
        onAvailabilityChanged(available);
    if (isOther && onActiveWindowChanged) onActiveWindowChanged();
}

}  // namespace orvane
