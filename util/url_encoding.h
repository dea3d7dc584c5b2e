#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "foundation/export.h"

namespace orvane {

/// The text with everything but the unreserved characters of RFC 3986 (ASCII letters, digits, "-", ".", "_",
/// "~") written as per cent signs and the uppercase hexadecimal of its UTF-8 bytes. Text that is encoded
/// already is encoded again. None for text with an unpaired surrogate, which has no UTF-8 form.
ORVANE_EXPORT std::optional<std::u16string> stringByURLEncoding(std::u16string_view text);

}  // namespace orvane
