#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace orvane::trials {

/// A process that tracks a busy user into real files and reports every save, killed at random moments. The
/// file must hold what was saved when it last reported, or one save more, and be written on.
class TrackerKills {
  public:
    /// `program` is orvane-trial-tracker. The folder must be empty and stay until the end.
    TrackerKills(std::string program, const std::filesystem::path& folder, std::uint64_t seed);

    /// Starts and kills one process. False once something was lost.
    bool step();

    /// What was lost, and how to see it again; none as long as nothing was.
    const std::optional<std::string>& problem() const { return problem_; }
    std::uint64_t kills() const { return kills_; }
    /// How many kills fell into a save.
    std::uint64_t unfinishedSaves() const { return unfinishedSaves_; }

  private:
    std::string program_;
    std::filesystem::path folder_;
    std::uint64_t seed_;
    std::mt19937_64 random_;
    std::vector<std::string> saved_;  // text of the store after each save, the empty store first
    std::uint64_t kills_ = 0;
    std::uint64_t unfinishedSaves_ = 0;
    std::optional<std::string> problem_;
};

}  // namespace orvane::trials
