#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "foundation/internal.h"

namespace orvane {

/// A text of a stored object as a text of its own.
inline std::optional<std::string> owned(std::optional<std::string_view> text) {
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

}  // namespace orvane
