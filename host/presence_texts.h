#pragma once

namespace orvane::host {

/// Has labels of presences read "2026-03-02 • 08:00 - 17:30", in the local time zone. Until another platform
/// is installed.
void usePresenceTexts();

}  // namespace orvane::host
