#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <random>
#include <string>

#include "trials/store_contents.h"

namespace orvane::trials {

/// `orvane track` on the display that the environment names, killed at random moments, time and again on one
/// store. What it told that it records must be in the file, and what was there before must stay. Somebody
/// else must bring windows to the front meanwhile.
class ProgramKills {
  public:
    /// `program` is orvane. The folder must be empty and stay until the end.
    ProgramKills(std::string program, const std::filesystem::path& folder, std::uint64_t seed);

    /// Starts and kills the program once. False once something was lost.
    bool step();

    /// What was lost; none as long as nothing was.
    const std::optional<std::string>& problem() const { return problem_; }
    std::uint64_t kills() const { return kills_; }
    /// How many spans of use there are in the file by now.
    int recordings() const { return before_.recordings; }

  private:
    std::string program_;
    std::filesystem::path folder_;
    std::mt19937_64 random_;
    StoreContents before_;
    std::uint64_t kills_ = 0;
    std::optional<std::string> problem_;
};

}  // namespace orvane::trials
