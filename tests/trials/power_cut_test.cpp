#include <gtest/gtest.h>

#include <iostream>

#include "tests/persistence/temporary_folder.h"
#include "trials/power_cuts.h"

namespace orvane::trials {
namespace {

TEST(PowerCuts, LoseNothingButTheLastSave) {
    const test::TemporaryFolder folder;
    PowerCuts trial(folder.path(), 1);
    constexpr int steps = 300;
    for (int step = 0; step < steps && trial.step(); ++step) {
    }
    EXPECT_FALSE(trial.problem()) << *trial.problem();
    EXPECT_GT(trial.saves(), std::uint64_t{steps});
    EXPECT_GT(trial.cuts(), 10 * trial.saves());
    EXPECT_GT(trial.lastSavesLost(), 0U);
    std::cout << trial.cuts() << " power cuts survived over " << trial.saves() << " saves\n";
}

}  // namespace
}  // namespace orvane::trials
