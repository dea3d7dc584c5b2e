#include <CLI/CLI.hpp>
#include <exception>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "host/command.h"
#include "host/nearest.h"
#include "host/replay/replay.h"

namespace {

using orvane::host::CommonOptions;

constexpr const char* exitStatusText =
    "Exit status: 0 when it was done, 1 when it could not be done, 2 when the command line or the input is "
    "wrong.";

/// The commands with their options; `run` is set to what was asked for.
class CommandLine {
  public:
    CommandLine() {
        app_.require_subcommand(1);
        app_.footer(exitStatusText);
        app_.set_version_flag("--version", ORVANE_VERSION);
        addCommon("track", "Record which application is in front, until this is ended",
                  [this] { return orvane::host::runTrack(options_); });
        addCommon("enable", "Switch tracking on", [this] { return orvane::host::runEnable(true, options_); });
        addCommon("disable", "Switch tracking off",
                  [this] { return orvane::host::runEnable(false, options_); });
        addApps();
        addReport();
        addPresence();
        addGroups();
        addExport();
        addImport();
        addPrivacy();
        addForget();
        addCommon("check", "Tell whether the store is sound",
                  [this] { return orvane::host::runCheck(options_); });
        addRecover();
        addCommon("doctor", "Tell what of the desktop is missing, and what to do about it",
                  [this] { return orvane::host::runDoctor(options_); });
        addSetup();
        addReplay();
    }

    int parseAndRun(int argc, char** argv) {
        const auto isNamed = [&](const CLI::App* command) { return command->check_name(argv[1]); };
        if (argc > 1 && *argv[1] != '-' && app_.get_subcommands(isNamed).empty()) return unknown(argv[1]);
        try {
            app_.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            return app_.exit(error) == 0 ? orvane::host::exitSuccess : orvane::host::exitUsage;
        }
        return run_();
    }

  private:
    int unknown(const std::string& command) const {
        std::vector<std::string> known;
        for (const CLI::App* subcommand : app_.get_subcommands(nullptr))
            known.push_back(subcommand->get_name());
        std::cerr << "orvane: there is no command \"" << command << "\"."
                  << orvane::host::nearestHint(command, known) << " `orvane --help` lists them.\n";
        return orvane::host::exitUsage;
    }

    CLI::App* addCommon(const char* name, const char* description, std::function<int()> run,
                        CLI::App* parent = nullptr) {
        CLI::App* command = (parent ? parent : &app_)->add_subcommand(name, description);
        command->footer(exitStatusText);
        command->add_flag("--json", options_.json, "Print JSON for programs");
        addStore(command);
        command->callback([this, run = std::move(run)] { choose(run); });
        return command;
    }

    void addStore(CLI::App* command) {
        command->add_option("--store", options_.store, "Folder that holds the database")
            ->type_name("DIR")
            ->check([](const std::string& folder) {
                std::error_code ignored;
                if (folder.empty()) return std::string("the folder has no name");
                const bool isFile = std::filesystem::exists(folder, ignored) &&
                                    !std::filesystem::is_directory(folder, ignored);
                return isFile ? "\"" + folder + "\" is a file, not a folder" : std::string();
            });
    }

    void addApps() {
        CLI::App* apps = addCommon("apps", "List the applications with their total time",
                                   [this] { return orvane::host::runApps(options_); });
        const auto add = [&](const char* name, const char* description, bool disabled) {
            addCommon(
                name, description,
                [this, disabled] { return orvane::host::runDisableApp(name_, disabled, options_); }, apps)
                ->add_option("ID", name_, "The application's identifier")
                ->required();
        };
        add("disable", "Record an application no more", true);
        add("enable", "Record an application again", false);
    }

    void addReport() {
        CLI::App* report = addCommon("report", "Tell where the time went", [this] {
            report_.common = options_;
            return orvane::host::runReport(report_);
        });
        report->add_option("RANGE", report_.range,
                           "today (the default), yesterday, week, month, year, all, 2026-03-02, FROM..TO");
        report->add_flag("--windows", report_.windows, "List the windows behind each application");
        CLI::Option* csv = report->add_flag("--csv", report_.csv, "Print comma-separated values");
        report->add_option("--html", report_.html, "Write a page for a browser, instead of printing")
            ->type_name("FILE")
            ->excludes(csv, report->get_option("--json"));
    }

    void addPresence() {
        CLI::App* presence = addCommon("presence", "Tell when each day began and ended",
                                       [this] { return orvane::host::runPresence(range_, options_); });
        presence->add_option("RANGE", range_, "As for report; today when left out");
    }

    void addGroups() {
        CLI::App* groups = addCommon("groups", "List the groups with their applications and total time",
                                     [this] { return orvane::host::runGroups(options_); });
        CLI::App* add = addCommon(
            "add", "Make a group", [this] { return orvane::host::runAddGroup(name_, color_, options_); },
            groups);
        add->add_option("NAME", name_, "The group's name")->required();
        add->add_option("--color", color_, "Its colour, such as #3584e4")->type_name("COLOR");
        CLI::App* rename = addCommon(
            "rename", "Call a group otherwise",
            [this] { return orvane::host::runRenameGroup(name_, newName_, options_); }, groups);
        addGroupOption(rename);
        rename->add_option("NEW", newName_, "Its new name")->required();
        CLI::App* color = addCommon(
            "color", "Give a group a colour",
            [this] { return orvane::host::runColorGroup(name_, *color_, options_); }, groups);
        addGroupOption(color);
        color->add_option("COLOR", color_, "A colour, such as #3584e4")->required();
        addGroupOption(addCommon(
            "remove", "Remove a group; its applications stay, without a group",
            [this] { return orvane::host::runRemoveGroup(name_, options_); }, groups));
        CLI::App* assign = addCommon(
            "assign", "Put applications into a group",
            [this] { return orvane::host::runAssign(name_, applications_, options_); }, groups);
        addGroupOption(assign);
        CLI::App* unassign = addCommon(
            "unassign", "Take applications out of their groups",
            [this] { return orvane::host::runUnassign(applications_, options_); }, groups);
        for (CLI::App* command : {assign, unassign})
            command->add_option("APP", applications_, "Names or identifiers of applications")->required();
    }

    void addGroupOption(CLI::App* command) {
        command->add_option("GROUP", name_, "The group's name or identifier")->required();
    }

    void addExport() {
        CLI::App* command = addCommon("export", "Write what was recorded to a file", [this] {
            export_.common = options_;
            return orvane::host::runExport(export_);
        });
        command->add_option("RANGE", export_.range, "As for report; all when left out");
        command->add_option("--format", export_.format, "jsonl (the default) or csv; goes by the file's name")
            ->type_name("FORMAT");
        command->add_option("--output", export_.output, "The file; standard output when left out")
            ->type_name("FILE");
        command->add_flag("--force", export_.force, "Overwrite the file if it exists");
    }

    void addImport() {
        CLI::App* command = addCommon("import", "Put what a file holds into the store", [this] {
            import_.common = options_;
            return orvane::host::runImport(import_);
        });
        command->add_option("FILE", import_.file, "An export, or - for standard input")->required();
        command->add_option("--format", import_.format, "jsonl, csv or buckets; goes by the file's name")
            ->type_name("FORMAT");
    }

    void addPrivacy() {
        CLI::App* privacy = addCommon("privacy", "List the rules about window titles",
                                      [this] { return orvane::host::runPrivacy(options_); });
        CLI::App* add = addCommon(
            "add", "Hide window titles from now on; a title is hidden when all that is given holds",
            [this] { return orvane::host::runAddTitleRule(titleRule_, options_); }, privacy);
        add->add_option("--app", titleRule_.application, "Titles of this application; * stands for anything")
            ->type_name("ID");
        add->add_option("--title", titleRule_.title, "Titles in which this regular expression is found")
            ->type_name("REGEX");
        add->add_flag("--private-windows", titleRule_.privateWindows,
                      "Titles that browsers give to private windows");
        add->add_flag("--all", titleRule_.all, "All titles");
        add->add_option("--replace", titleRule_.replacement, "Record this instead; nothing when left out")
            ->type_name("TEXT");
        addCommon(
            "remove", "Remove a rule",
            [this] { return orvane::host::runRemoveTitleRule(ruleNumber_, options_); }, privacy)
            ->add_option("NUMBER", ruleNumber_, "The rule's number in the list")
            ->required();
        CLI::App* test = addCommon(
            "test", "Tell what would be recorded for a title",
            [this] { return orvane::host::runTestTitleRules(name_, title_, options_); }, privacy);
        test->add_option("ID", name_, "The application's identifier")->required();
        test->add_option("TITLE", title_, "The window's title")->required();
    }

    void addForget() {
        CLI::App* forget = addCommon("forget", "Delete what was recorded, beyond recall", [this] {
            forget_.common = options_;
            return orvane::host::runForget(forget_);
        });
        forget->add_option("RANGE", forget_.range, "As for report; everything of --app when left out");
        forget->add_option("--app", forget_.application, "Only what was recorded of this application")
            ->type_name("APP");
        forget->add_flag("--yes", forget_.yes, "Do not ask");
    }

    void addRecover() {
        CLI::App* recover =
            app_.add_subcommand("recover", "Save what can be read of a damaged database into a new one");
        recover->footer(exitStatusText);
        recover->add_flag("--json", options_.json, "Print JSON for programs");
        recover->add_option("FROM", from_, "The damaged file; it is not changed")->required();
        recover->add_option("TO", to_, "The file to make")->required();
        recover->callback(
            [this] { choose([this] { return orvane::host::runRecover(from_, to_, options_); }); });
    }

    void addSetup() {
        CLI::App* setup = app_.add_subcommand("setup", "Make a desktop tell its windows");
        setup->footer(exitStatusText);
        setup->require_subcommand(1);
        addDesktop(setup, "gnome", "Install and switch on an extension of GNOME Shell",
                   &orvane::host::runSetupGnome);
        addDesktop(setup, "kwin", "Write a desktop entry that lets KWin tell this program its windows",
                   &orvane::host::runSetupKwin);
    }

    void addDesktop(CLI::App* setup, const char* name, const char* description, int (*run)(bool remove)) {
        CLI::App* desktop = setup->add_subcommand(name, description);
        desktop->footer(exitStatusText);
        desktop->add_flag("--remove", remove_, "Undo it");
        desktop->callback([this, run] { choose([this, run] { return run(remove_); }); });
    }

    void addReplay() {
        CLI::App* replay = app_.add_subcommand("replay", "Run a trace against a simulated desktop");
        replay->footer(exitStatusText);
        replay->add_option("TRACE", trace_, "File of JSON Lines; - for standard input")->required();
        replay
            ->add_option("--support", replayOptions_.supportFolder,
                         "The simulated user's folder for application data")
            ->type_name("DIR");
        replay->callback(
            [this] { choose([this] { return orvane::host::runReplayFile(trace_, replayOptions_); }); });
    }

    /// The innermost command was parsed first and is the one that is meant.
    void choose(std::function<int()> run) {
        if (!run_) run_ = std::move(run);
    }

    CLI::App app_{"Orvane records which application window you work in, and tells where the time went.",
                  "orvane"};
    CommonOptions options_;
    orvane::host::ReportOptions report_;
    std::string range_ = "today";
    std::string name_;
    std::string newName_;
    std::optional<std::string> color_;
    std::vector<std::string> applications_;
    orvane::host::TitleRuleOptions titleRule_;
    std::size_t ruleNumber_ = 0;
    std::string title_;
    orvane::host::ForgetOptions forget_;
    std::string from_;
    std::string to_;
    orvane::host::ExportOptions export_;
    orvane::host::ImportOptions import_;
    bool remove_ = false;
    std::string trace_;
    orvane::host::ReplayOptions replayOptions_;
    std::function<int()> run_;
};

}  // namespace

int main(int argc, char** argv) {
    try {
        const int status = CommandLine().parseAndRun(argc, argv);
        if (std::cout.flush() || status != orvane::host::exitSuccess) return status;
        std::cerr << "orvane: Standard output cannot be written.\n";
        return orvane::host::exitFailure;
    } catch (const std::exception& error) {
        std::cerr << "orvane: " << error.what() << '\n';
        return orvane::host::exitFailure;
    }
}
