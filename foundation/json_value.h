#pragma once

#include <nlohmann/json_fwd.hpp>

#include "foundation/internal.h"
#include "foundation/value.h"

namespace orvane {

/// What the JSON says, with none for null. Whole numbers beyond 64 signed bits become the nearest number.
Value valueFromJson(const nlohmann::ordered_json& json);

}  // namespace orvane
