#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/internal.h"

namespace orvane {

/// What is run: a program, or the script that an interpreter runs.
struct Program {
    /// The file with all links resolved, or a plain name where no file is known; empty when nothing is known.
    std::filesystem::path path;
    /// The base name that it was called by.
    std::string name;
    /// What follows on the command line.
    std::vector<std::string> arguments;
    bool isScript = false;

    /// The program behind a command line. Relative paths are taken from `folder`; a plain name is looked for
    /// in the search path.
    static Program ofCommand(const std::vector<std::string>& command,
                             const std::filesystem::path& folder = {});
};

/// A process as the proc folder shows it. What cannot be read is empty.
struct ProcessInfo {
    std::int32_t parent = 0;
    std::int32_t processGroup = 0;
    bool hasTerminal = false;
    std::string commandName;
    Program program;
    /// The Flatpak application that the process belongs to.
    std::string flatpak;
    /// The snap that the process belongs to, and the name of its application in it.
    std::string snap;
    std::string snapApplication;
    /// What the application that a desktop started the process for may be called, the likeliest first.
    std::vector<std::string> launchedAs;
};

/// Reads the proc folder.
class ProcessReader {
  public:
    explicit ProcessReader(std::filesystem::path folder);

    /// None when there is no such process.
    std::optional<ProcessInfo> read(std::int32_t process) const;
    /// When the process was started, in clock ticks since boot: tells a process from a later one with the
    /// same id.
    std::optional<std::uint64_t> startTime(std::int32_t process) const;

  private:
    std::filesystem::path folder_;
};

/// Names of an application in the name of a systemd unit that a desktop made for it ("app-…"), likeliest
/// first.
std::vector<std::string> applicationNamesOfUnit(std::string_view unit);

}  // namespace orvane
