#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace orvane::host {

/// Exit statuses of the program.
enum ExitStatus : int {
    exitSuccess = 0,
    exitFailure = 1,  ///< it could not be done; a message tells why
    exitUsage = 2,    ///< the command line, or the input that was given, is wrong
};

/// What every command that touches the store understands.
struct CommonOptions {
    bool json = false;
    /// Folder that holds the database; the usual one when absent.
    std::optional<std::filesystem::path> store;
};

int runTrack(const CommonOptions& options);
/// Sets the user default that tracking follows.
int runEnable(bool enabled, const CommonOptions& options);
int runApps(const CommonOptions& options);
/// Switches the recording of one application off, or on again.
int runDisableApp(const std::string& identifier, bool disabled, const CommonOptions& options);
int runDoctor(const CommonOptions& options);

struct ReportOptions {
    CommonOptions common;
    std::string range = "today";
    bool windows = false;  ///< the titles behind each application too
    bool csv = false;
    /// File that a page is written to, instead of printing.
    std::optional<std::filesystem::path> html;
};

/// Prints where the time of a range went, or writes a page of it.
int runReport(const ReportOptions& options);
/// Prints the presence of each day of a range up to now.
int runPresence(const std::string& range, const CommonOptions& options);

}  // namespace orvane::host
