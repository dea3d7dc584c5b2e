#pragma once

#include <string>
#include <string_view>

#include "foundation/export.h"

namespace orvane {

/// UTF-8 as UTF-16. Ill-formed bytes become one U+FFFD for each maximal part of a sequence that could have
/// gone on, as the Unicode Standard recommends. A zero byte is a character like any other.
ORVANE_EXPORT std::u16string utf16(std::string_view text);

/// UTF-16 as UTF-8; each unpaired surrogate becomes U+FFFD.
ORVANE_EXPORT std::string utf8(std::u16string_view text);

}  // namespace orvane
