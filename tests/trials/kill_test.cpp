#include <gtest/gtest.h>

#include <sys/wait.h>
#include <array>
#include <cstdio>
#include <iostream>
#include <string>

#include "tests/persistence/temporary_folder.h"
#include "trials/tracker_kills.h"

namespace orvane::trials {
namespace {

TEST(TrackerKills, LoseNothingThatWasReported) {
    const test::TemporaryFolder folder;
    TrackerKills trial(ORVANE_TRIAL_TRACKER, folder.path(), 3);
    for (int kill = 0; kill < 30 && trial.step(); ++kill) {
    }
    EXPECT_FALSE(trial.problem()) << *trial.problem();
    EXPECT_EQ(trial.kills(), 30U);
    EXPECT_GT(trial.unfinishedSaves(), 0U);
    std::cout << trial.kills() << " kills survived, " << trial.unfinishedSaves()
              << " of them within a save\n";
}

/// Exit status and output, both streams, of the long form's program.
std::pair<int, std::string> runCrash(const std::string& arguments) {
    FILE* pipe = popen((std::string(ORVANE_CRASH) + " " + arguments + " 2>&1").c_str(), "r");
    std::string output;
    std::array<char, 4096> bytes;
    while (const std::size_t count = fread(bytes.data(), 1, bytes.size(), pipe))
        output.append(bytes.data(), count);
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

TEST(CrashProgram, RunsForTheTimeGivenAndSumsUp) {
    const auto [status, output] = runCrash("--seconds 1 --seed 5");
    EXPECT_EQ(status, 0) << output;
    EXPECT_NE(output.find("seed 5"), std::string::npos);
    EXPECT_NE(output.find("power cuts"), std::string::npos);
    EXPECT_NE(output.find("nothing lost\n"), std::string::npos);
}

TEST(CrashProgram, RefusesWhatItDoesNotKnow) {
    for (const char* arguments :
         {"--second 1", "--seconds 0", "--seconds many", "--program /no/such", "more"})
        EXPECT_EQ(runCrash(arguments).first, 2) << arguments;
    EXPECT_EQ(runCrash("--help").first, 0);
}

}  // namespace
}  // namespace orvane::trials
