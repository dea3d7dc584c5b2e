#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "foundation/color.h"
#include "foundation/export.h"

namespace orvane {

/// Reads the stored form of a colour: four pairs of hexadecimal digits of either case for red, green, blue
/// and alpha; what follows the eighth character is ignored. Each pair reads its leading digits after any
/// white space, so "1g" is 1 and " f" is 15. Absent or shorter text (six digits, too) is opaque white; a pair
/// without a leading digit makes the whole none.
///
/// The text is UTF-8, counted and cut in UTF-16 units; ill-formed bytes count as `utf16()` reads them and are
/// no digits.
ORVANE_EXPORT std::optional<Color> createColorFromHexTripletsString(std::optional<std::string_view> text);

/// The stored form of a colour: each component × 255, cut off toward zero, as at least two lowercase
/// hexadecimal digits. None is written as eight zeros. Components outside 0 to 1 are written as they come
/// out, as 32-bit two's complement held within its range, and may take more than two digits; one that is not
/// a number is 0.
ORVANE_EXPORT std::string hexStringForColor(std::optional<Color> color);

}  // namespace orvane
