#pragma once

#include <string>

#include "foundation/export.h"
#include "platform/uuid_source.h"

namespace orvane {

/// Sets where `uniqueString()` and `uniqueBase64String()` take their UUIDs from; none: random ones (RFC 4122,
/// version 4). The caller keeps ownership; once this returns the source before is no longer in use. Any
/// thread; calls to one source never overlap. A source must not ask for unique strings itself.
ORVANE_EXPORT void setUuidSource(UuidSource* source);

/// A new UUID as 36 characters: uppercase hexadecimal in groups of 8, 4, 4, 4 and 12 joined by hyphens.
ORVANE_EXPORT std::u16string uniqueString();
ORVANE_EXPORT std::u16string uniqueString(UuidSource& source);

/// A new UUID as 22 characters of URL-safe base64 (RFC 4648) without padding.
ORVANE_EXPORT std::u16string uniqueBase64String();
ORVANE_EXPORT std::u16string uniqueBase64String(UuidSource& source);

}  // namespace orvane
