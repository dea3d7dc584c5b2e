#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "trials/store_contents.h"

namespace orvane::trials {

/// Lets another tracker go on with a store after a failure, for a few polls a day later. What is wrong with
/// that; none when it recorded them and left everything else as it was. `before` is what the store held.
std::optional<std::string> goOnTracking(const std::filesystem::path& folder, const std::string& fileSystem,
                                        const StoreContents& before);

}  // namespace orvane::trials
