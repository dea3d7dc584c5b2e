#pragma once

#include "host/html/markup.h"
#include "host/html/timeline.h"

namespace orvane::host {

/// Adds a section for each day: a lane for each application, idle times and presence, and the same as a
/// table.
void addTimeline(Markup& page, const Timeline& timeline);

}  // namespace orvane::host
