#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

#include "foundation/internal.h"
#include "platform/linux/process_info.h"

namespace orvane {

/// Finds the process behind a window whose desktop tells only the application's identifier.
class ProcessSearch {
  public:
    explicit ProcessSearch(std::filesystem::path procFolder = "/proc");

    /// The only process of this user whose program, sandbox or systemd unit has that name or, for an
    /// identifier in reverse domain order, its last part; its own child processes do not count. 0 when there
    /// is none or more than one, since a wrong answer would be worse.
    std::int32_t find(std::string_view applicationIdentifier) const;

  private:
    std::filesystem::path folder_;
    ProcessReader reader_;
};

}  // namespace orvane
