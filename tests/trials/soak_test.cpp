#include <gtest/gtest.h>

#include <iostream>

#include "tests/persistence/temporary_folder.h"
#include "trials/soak.h"

namespace orvane::trials {
namespace {

TEST(Soak, TenDaysOfUseAreCountedRightAndNothingGrows) {
    const test::TemporaryFolder folder;
    Soak soak(folder.path(), 1);
    while (soak.use().days() < 10 && soak.day()) {
    }
    EXPECT_FALSE(soak.problem()) << *soak.problem();
    EXPECT_EQ(soak.use().days(), 10u);
    EXPECT_GT(soak.use().comparedSeconds(), 400'000u);
    std::cout << soak.use().polls() << " polls soaked in " << soak.use().days() << " days\n";
}

}  // namespace
}  // namespace orvane::trials
