#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

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
/// Installs what the library needs to see GNOME's windows, or removes it again, and tells each step.
int runSetupGnome(bool remove);
/// Lets KWin tell this program its windows, or no longer, and tells each step.
int runSetupKwin(bool remove);

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

/// Lists the groups with their applications and their total time.
int runGroups(const CommonOptions& options);
/// Groups and applications are named by identifier or by name, the name in either case.
int runAddGroup(const std::string& name, const std::optional<std::string>& color,
                const CommonOptions& options);
int runRenameGroup(const std::string& group, const std::string& newName, const CommonOptions& options);
int runColorGroup(const std::string& group, const std::string& color, const CommonOptions& options);
int runRemoveGroup(const std::string& group, const CommonOptions& options);
int runAssign(const std::string& group, const std::vector<std::string>& applications,
              const CommonOptions& options);
int runUnassign(const std::vector<std::string>& applications, const CommonOptions& options);

/// Lists the user's rules about window titles.
int runPrivacy(const CommonOptions& options);

struct TitleRuleOptions {
    std::optional<std::string> application;
    std::optional<std::string> title;
    bool privateWindows = false;
    bool all = false;  ///< the rule may ask for nothing
    std::optional<std::string> replacement;
};

int runAddTitleRule(const TitleRuleOptions& rule, const CommonOptions& options);
/// Removes the rule of that number in the list.
int runRemoveTitleRule(std::size_t number, const CommonOptions& options);
/// Tells what would be recorded for a title.
int runTestTitleRules(const std::string& application, const std::string& title, const CommonOptions& options);

struct ForgetOptions {
    CommonOptions common;
    std::optional<std::string> range;
    std::optional<std::string> application;
    bool yes = false;  ///< do not ask
};

/// Deletes what was recorded, beyond recall.
int runForget(const ForgetOptions& options);

/// Tells whether the store is sound.
int runCheck(const CommonOptions& options);
/// Saves what can be read of a damaged database into a new one.
int runRecover(const std::filesystem::path& from, const std::filesystem::path& to,
               const CommonOptions& options);

struct ExportOptions {
    CommonOptions common;
    std::string range = "all";
    std::optional<std::string> format;            ///< goes by the file's name when absent
    std::optional<std::filesystem::path> output;  ///< standard output when absent
    bool force = false;                           ///< an existing file may be overwritten
};

/// Writes what the store holds to a file.
int runExport(const ExportOptions& options);

struct ImportOptions {
    CommonOptions common;
    std::filesystem::path file;
    std::optional<std::string> format;  ///< goes by the file's name when absent
};

/// Puts what a file holds into the store, all or nothing.
int runImport(const ImportOptions& options);

}  // namespace orvane::host
