#pragma once

#include <gio/gio.h>

#include <cstdint>
#include <optional>
#include <string>

#include "foundation/internal.h"

namespace orvane {

// What replies and signals of the session's services hold. All take the values in a tuple, or null for a call
// that failed, and give none when the values are of another kind.

std::optional<bool> booleanIn(GVariant* values);
/// A boolean within a variant, as properties are answered.
std::optional<bool> booleanPropertyIn(GVariant* values);
/// The boolean that a property has after a change, where the signal of the change tells it.
std::optional<bool> changedBooleanIn(GVariant* values, const char* property);
/// Empty for none.
std::string objectPathIn(GVariant* values);
/// Place of a descriptor in the list that came along.
std::optional<std::int32_t> descriptorIndexIn(GVariant* values);
/// Path of the session that was removed; empty for none.
std::string removedSessionIn(GVariant* values);
/// Path of the user's session in a list of sessions: the one at a seat, or else the first. Empty for none.
std::string sessionOfUser(GVariant* values, std::uint32_t user);

}  // namespace orvane
