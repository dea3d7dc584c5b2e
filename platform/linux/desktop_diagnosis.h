#pragma once

#include <vector>

#include "foundation/internal.h"
#include "platform/desktop_health.h"

namespace orvane {

class DesktopChoice;
class LinuxWorkspace;
class SessionMonitor;

/// What each service of the desktop gives at the moment, and what it lacks.
std::vector<ServiceHealth> diagnoseDesktop(DesktopChoice& desktop, LinuxWorkspace& workspace,
                                           const SessionMonitor& session);

/// The same without what is seen, which changes all the time.
std::vector<ServiceHealth> withoutSights(std::vector<ServiceHealth> health);

}  // namespace orvane
