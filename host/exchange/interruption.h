#pragma once

#include <array>
#include <csignal>

namespace orvane::host {

/// While it lives, the first SIGINT, SIGTERM or SIGHUP is noted, so that work can end in good order; a second
/// one ends the process at once. One at a time.
class Interruption {
  public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    static bool requested();

  private:
    static constexpr std::array signals{SIGINT, SIGTERM, SIGHUP};
    std::array<struct sigaction, signals.size()> before_{};
};

}  // namespace orvane::host
