// The long form of the trials of power cuts, failing disks and killed trackers; see --help.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <string>

#include "trials/faulty_operations.h"
#include "trials/power_cuts.h"
#include "trials/program_kills.h"
#include "trials/tracker_kills.h"

namespace {

using namespace orvane::trials;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

volatile std::sig_atomic_t interrupted = 0;

/// A folder that goes away with all it holds.
class WorkFolder {
  public:
    WorkFolder() {
        std::string pattern = (fs::temp_directory_path() / "orvane-crash-XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::runtime_error(pattern + " cannot be made");
        path_ = pattern;
    }
    ~WorkFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    /// An empty folder of a new name.
    fs::path make() {
        fs::path result = path_ / std::to_string(++made_);
        fs::create_directory(result);
        return result;
    }

  private:
    fs::path path_;
    int made_ = 0;
};

/// Runs one trial after the other, each for a while, until the time is over or one of them fails.
class Run {
  public:
    Run(std::uint64_t seed, Clock::duration time, std::string program)
        : seed_(seed), began_(Clock::now()), time_(time), program_(std::move(program)) {
        const fs::path here = fs::read_symlink("/proc/self/exe").parent_path();
        trialTracker_ = here / "orvane-trial-tracker";
        if (!program_.empty()) programKills_.emplace(program_, work_.make(), seed);
    }

    /// Whether everything survived.
    bool run() {
        while (goesOn()) {
            cutPower();
            failOperations();
            killTrackers();
            killPrograms();
            ++seed_;
        }
        showProgress(true);
        if (!problem_.empty()) std::fprintf(stderr, "LOST: %s\n", problem_.c_str());
        std::printf("%s, %s\n", counts().c_str(), problem_.empty() ? "nothing lost" : "something lost");
        return problem_.empty();
    }

  private:
    bool goesOn() const { return problem_.empty() && !interrupted && Clock::now() - began_ < time_; }

    void cutPower() {
        constexpr int steps = 100;
        PowerCuts trial(work_.make(), seed_);
        const std::uint64_t before = cuts_;
        for (int step = 0; step < steps && goesOn() && trial.step(); ++step) {
            cuts_ = before + trial.cuts();
            showProgress();
        }
        cuts_ = before + trial.cuts();
        note(trial.problem());
    }

    void failOperations() {
        constexpr int steps = 6;
        FaultyOperations trial(work_.make(), seed_, steps);
        while (goesOn() && trial.step()) {
            ++faults_;
            showProgress();
        }
        note(trial.problem());
    }

    void killTrackers() {
        constexpr int most = 50;
        TrackerKills trial(trialTracker_, work_.make(), seed_);
        for (int kill = 0; kill < most && goesOn() && trial.step(); ++kill) {
            ++kills_;
            showProgress();
        }
        unfinished_ += trial.unfinishedSaves();
        note(trial.problem());
    }

    void killPrograms() {
        constexpr int most = 10;
        if (!programKills_) return;
        for (int kill = 0; kill < most && goesOn() && programKills_->step(); ++kill) showProgress();
        note(programKills_->problem());
    }

    void note(const std::optional<std::string>& problem) {
        if (problem && problem_.empty()) problem_ = *problem;
    }

    std::string counts() const {
        std::string text = std::to_string(cuts_) + " power cuts, " + std::to_string(faults_) +
                           " failed operations and " + std::to_string(kills_) + " kills survived";
        if (unfinished_ > 0) text += " (" + std::to_string(unfinished_) + " within a save)";
        if (programKills_)
            text += ", " + std::to_string(programKills_->kills()) + " kills of orvane track (" +
                    std::to_string(programKills_->recordings()) + " recordings)";
        return text;
    }

    /// On a terminal, a few times a second.
    void showProgress(bool ends = false) {
        constexpr std::chrono::milliseconds interval(200);
        const auto now = Clock::now();
        if (!isatty(STDERR_FILENO)) return;
        if (ends) {
            std::fprintf(stderr, "\r\033[K");
            return;
        }
        if (now - shown_ < interval) return;
        shown_ = now;
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now - began_).count();
        std::fprintf(stderr, "\r\033[K%llds  %s", static_cast<long long>(seconds), counts().c_str());
    }

    WorkFolder work_;
    std::uint64_t seed_;
    Clock::time_point began_;
    Clock::time_point shown_;
    Clock::duration time_;
    std::string program_;
    std::string trialTracker_;
    std::optional<ProgramKills> programKills_;
    std::uint64_t cuts_ = 0;
    std::uint64_t faults_ = 0;
    std::uint64_t kills_ = 0;
    std::uint64_t unfinished_ = 0;
    std::string problem_;
};

/// Kills of the program alone, so many of them.
bool killProgram(const std::string& program, std::uint64_t seed, int count) {
    WorkFolder work;
    ProgramKills trial(program, work.make(), seed);
    while (count-- > 0 && trial.step()) {
    }
    if (trial.problem()) std::fprintf(stderr, "LOST: %s\n", trial.problem()->c_str());
    std::printf("%llu kills of orvane track survived, %d recordings\n",
                static_cast<unsigned long long>(trial.kills() - (trial.problem() ? 1 : 0)),
                trial.recordings());
    return !trial.problem() && trial.recordings() > 0;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    CLI::App app{
        "Cuts the power of a tracker's disk at every operation, lets every operation fail, and kills "
        "trackers\n"
        "at random moments, with ever new users, and checks each time that nothing saved is lost.",
        "crash"};
    int seconds = 60;
    std::uint64_t seed = std::random_device()();
    std::string program;
    int kills = 0;
    app.add_option("--seconds", seconds, "How long; 60 when not given")
        ->type_name("N")
        ->check(CLI::Range(1, 1'000'000));
    app.add_option("--seed", seed, "Begin with this user; one at random when not given")->type_name("N");
    app.add_option("--program", program, "Kill this orvane too, which tracks the display of $DISPLAY")
        ->type_name("FILE")
        ->check(CLI::ExistingFile);
    app.add_option("--program-kills", kills, "Only kill that program, so many times")
        ->type_name("N")
        ->check(CLI::Range(1, 1'000'000))
        ->needs("--program");
    app.footer(
        "Exit status: 0 when nothing was lost, 1 when something was, 2 when the command line is wrong.");
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    std::signal(SIGINT, [](int) { interrupted = 1; });
    std::signal(SIGTERM, [](int) { interrupted = 1; });
    try {
        if (kills > 0) return killProgram(program, seed, kills) ? 0 : 1;
        std::fprintf(stderr, "crash: %d seconds from seed %llu\n", seconds,
                     static_cast<unsigned long long>(seed));
        return Run(seed, std::chrono::seconds(seconds), program).run() ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "crash: %s\n", error.what());
        return 1;
    }
}
