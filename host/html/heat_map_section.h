#pragma once

#include "host/html/heat_map.h"
#include "host/html/markup.h"

namespace orvane::host {

/// Adds a section with the heat map as a table of hours.
void addHeatMap(Markup& page, const HeatMap& heatMap);

}  // namespace orvane::host
