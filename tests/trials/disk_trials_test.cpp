#include <gtest/gtest.h>

#include <iostream>

#include "tests/persistence/temporary_folder.h"
#include "trials/faulty_operations.h"
#include "trials/power_cuts.h"

namespace orvane::trials {
namespace {

TEST(PowerCuts, LoseNothingButTheLastSave) {
    const test::TemporaryFolder folder;
    PowerCuts trial(folder.path(), 1);
    constexpr int steps = 200;
    for (int step = 0; step < steps && trial.step(); ++step) {
    }
    EXPECT_FALSE(trial.problem()) << *trial.problem();
    EXPECT_GE(trial.saves(), std::uint64_t{steps});
    EXPECT_GT(trial.cuts(), 10 * trial.saves());
    EXPECT_GT(trial.lastSavesLost(), 0U);
    std::cout << trial.cuts() << " power cuts survived over " << trial.saves() << " saves\n";
}

TEST(FaultyOperations, AreCaughtUpWith) {
    const test::TemporaryFolder folder;
    FaultyOperations trial(folder.path(), 2, 8);
    while (trial.step()) {
    }
    EXPECT_FALSE(trial.problem()) << *trial.problem();
    EXPECT_EQ(trial.runs(), trial.allRuns());
    std::cout << trial.runs() << " failed operations survived\n";
}

}  // namespace
}  // namespace orvane::trials
