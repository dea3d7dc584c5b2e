#pragma once

#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>

namespace orvane::host {

/// Exit statuses of a replay.
enum ReplayStatus : int {
    replayCompleted = 0,
    replayFailed = 1,   ///< no folder for the simulated user, or the output could not be written
    replayInvalid = 2,  ///< a line was invalid, or the trace could not be read; a message tells which and why
};

struct ReplayOptions {
    /// The simulated user's folder for application data; without one a temporary folder, removed at the end.
    std::optional<std::filesystem::path> supportFolder;
    /// Where the data model is looked for; empty: where the library's own resources lie.
    std::filesystem::path resourceFolder;
};

/// Runs a trace against a simulated desktop with a virtual clock and prints what it asks for to `output`, as
/// JSON Lines, and what is wrong with it to `errors`. During the run the simulated desktop is the process's
/// platform, its shared tracker the trace's, and its local time zone that of the trace: nothing else may use
/// the library meanwhile. All three are put back at the end.
int runReplay(std::istream& trace, std::ostream& output, std::ostream& errors,
              const ReplayOptions& options = {});

/// The same for a trace in a file ("-": standard input), printed to standard output and standard error.
int runReplayFile(const std::string& trace, const ReplayOptions& options = {});

}  // namespace orvane::host
