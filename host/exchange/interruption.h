#pragma once

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
    struct sigaction interruptBefore_ {};
    struct sigaction terminateBefore_ {};
    struct sigaction hangupBefore_ {};
};

}  // namespace orvane::host
