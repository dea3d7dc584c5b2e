#include "platform/linux/desktop_backend.h"

namespace orvane {

DesktopBackend::~DesktopBackend() = default;

}  // namespace orvane
