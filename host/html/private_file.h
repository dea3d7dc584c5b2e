#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace orvane::host {

/// Writes a file that only its owner may read (mode 0600), in place of the one that was there: whoever opens
/// it finds the old or the new content whole. Empty when that was done; else why it could not be, and the old
/// file is untouched.
std::string writePrivateFile(const std::filesystem::path& path, std::string_view content);

}  // namespace orvane::host
