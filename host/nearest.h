#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvane::host {

/// ` Did you mean "editor"?` for the known word with the fewest letters to change, case aside; empty when
/// none is near.
std::string nearestHint(std::string_view word, const std::vector<std::string>& known);

}  // namespace orvane::host
