#pragma once

#include <optional>

#include "foundation/color.h"
#include "foundation/export.h"
#include "foundation/image.h"

namespace orvane {

/// The most saturated among an icon's pixels that are opaque, brighter than 0.6 and whose red differs from
/// both blue and green. Among equals the first wins, column by column from the top left. None when no pixel
/// qualifies or the image has fewer pixels than its size says.
///
/// Green is not compared with blue, so cyan qualifies, while pure green, pure blue, yellow and magenta do
/// not. The image is taken as it is; icons are meant to come drawn into 32 × 32 pixels.
ORVANE_EXPORT std::optional<Color> dominantColor(const Image& image);

}  // namespace orvane
