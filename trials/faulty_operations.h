#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/simulated/unreliable_disk.h"
#include "trials/store_contents.h"

namespace orvane::trials {

/// A busy user's tracker on a disk at which one operation fails, or is cut short: once for each operation of
/// the run and each of the two faults. The tracker must live through it and in the end have recorded what it
/// records on a sound disk.
class FaultyOperations {
  public:
    /// The folder must be empty and stay until the end; the user works `steps` times in each run.
    FaultyOperations(const std::filesystem::path& folder, std::uint64_t seed, int steps);

    /// Makes the run of the next fault. False when all were made, and once something was lost.
    bool step();

    /// What was lost, and how to see it again; none as long as nothing was.
    const std::optional<std::string>& problem() const { return problem_; }
    std::uint64_t runs() const { return runs_; }
    /// Runs that all faults take together.
    std::uint64_t allRuns() const { return 2 * kinds_.size(); }

  private:
    /// What the store holds after a run in which that operation (0: none) goes wrong.
    StoreContents run(std::uint64_t operation, DiskFault fault);
    /// What is wrong with the contents after a run; none when all is well.
    std::optional<std::string> wrongWith(const StoreContents& contents, FileOperation faultyKind) const;

    std::filesystem::path folder_;
    std::uint64_t seed_;
    int steps_;
    UnreliableDisk disk_;
    StoreContents expected_;
    std::vector<FileOperation> kinds_;  // of the operations of a run
    std::uint64_t operations_ = 0;      // of the latest run, but for its last poll
    std::uint64_t runs_ = 0;
    std::optional<std::string> problem_;
};

}  // namespace orvane::trials
