#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/simulated/unreliable_disk.h"
#include "trials/busy_user.h"
#include "trials/desk.h"
#include "trials/store_contents.h"

namespace orvane::trials {

/// A busy user's tracker on a disk that loses its power at every single operation in turn. Each time another
/// tracker opens what is left, on a computer of its own, which must be sound, hold exactly what some save
/// held, the last but one or a later one, and be written on.
class PowerCuts {
  public:
    /// The folder must be empty and stay until the end. The same seed gives the same user and the same cuts.
    PowerCuts(const std::filesystem::path& folder, std::uint64_t seed);

    /// Lets the user work for one poll or a few, and cuts the power at each of their operations. False once
    /// something was lost.
    bool step();

    /// What was lost, and how to see it again; none as long as nothing was.
    const std::optional<std::string>& problem() const { return problem_; }
    std::uint64_t cuts() const { return cuts_; }
    std::uint64_t saves() const { return saved_.size() - 1; }
    /// How many cuts took the last save that was complete with them.
    std::uint64_t lastSavesLost() const { return lastSavesLost_; }

  private:
    /// A loss of power, to be judged when the saves around it are known.
    struct Cut {
        std::uint64_t operation;
        std::size_t completeSaves;
        UnreliableDisk::Files left;
    };

    void noteCut(const DiskOperation& operation);
    void noteSave();
    void judge(const Cut& cut);
    std::filesystem::path file() const { return folder_ / "Orvaning.db"; }

    std::filesystem::path folder_;
    std::uint64_t seed_;
    UnreliableDisk disk_;
    UnreliableDisk restored_;
    Desk desk_;
    BusyUser user_;
    bool hasBegun_ = false;
    bool isWatching_ = false;
    // Contents after each save, the empty store first.
    std::vector<StoreContents> saved_;
    std::vector<Cut> open_;
    // What was left before and turned out well, by a hash of it, and whether it lacked the last save. The
    // same files need no second look.
    std::unordered_map<std::size_t, bool> sound_;
    std::uint64_t cuts_ = 0;
    std::uint64_t lastSavesLost_ = 0;
    std::optional<std::string> problem_;
};

}  // namespace orvane::trials
