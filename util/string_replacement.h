#pragma once

#include <string>
#include <string_view>

#include "foundation/export.h"
#include "util/character_set.h"

namespace orvane {

/// The text with every character of the set replaced, each on its own. What was put in is not searched again.
ORVANE_EXPORT std::u16string stringByReplacingOccurrencesOfCharactersInSetWithString(
    std::u16string_view text, const CharacterSet& set, std::u16string_view replacement);

/// The text with every character replaced that one file system or another forbids in names: / \ ? % * | " <
/// >, carriage return and line feed. The colon stays.
ORVANE_EXPORT std::u16string stringBySanitizingForFileName(std::u16string_view text,
                                                           std::u16string_view replacement);
/// The same with nothing in their place.
ORVANE_EXPORT std::u16string stringBySanitizingForFileName(std::u16string_view text);

}  // namespace orvane
