#pragma once

#include <cstdint>
#include <random>

#include "trials/desk.h"

namespace orvane::trials {

/// Somebody at work, from a seed: windows and applications change, the user rests, the computer sleeps, and
/// the host makes groups, puts applications into them and switches some off. The same for the same seed,
/// whatever the disk does.
class BusyUser {
  public:
    /// The desk must outlive the user.
    BusyUser(Desk& desk, std::uint64_t seed) : desk_(desk), random_(seed) {}

    /// Switches tracking on, with a first window.
    void begin();
    /// Ten seconds, or a pause, and thus at least one poll.
    void work();

  private:
    std::uint64_t upTo(std::uint64_t most) { return random_() % (most + 1); }
    void switchWindow();
    void editGroups();
    void editApplications();

    Desk& desk_;
    std::mt19937_64 random_;
    int groups_ = 0;
};

}  // namespace orvane::trials
