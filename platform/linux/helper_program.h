#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "foundation/internal.h"

namespace orvane {

/// Where a program lies that ships with the library: under `libexec/orvane` in the tree that the library is
/// installed in, which may have been moved, or else where it was built. None when it is missing.
std::optional<std::filesystem::path> helperProgram(const std::string& name);

/// Runs a program and returns what it writes to standard output; standard input is empty. None when it cannot
/// be started, writes more than `most` bytes or has not ended in time; it is killed then. Waits, so the time
/// is to be short.
std::optional<std::vector<std::uint8_t>> outputOfProgram(const std::vector<std::string>& command,
                                                         std::size_t most, std::chrono::milliseconds longest);

}  // namespace orvane
