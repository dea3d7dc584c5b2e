#include <gtest/gtest.h>

#include <chrono>

#include "host/replay/local_time_zone.h"
#include "store/orvane_recording.h"
#include "tests/persistence/temporary_folder.h"
#include "trials/desk.h"
#include "util/day_boundaries.h"

namespace orvane::trials {
namespace {

using namespace std::chrono_literals;

constexpr double epoch = 1'772'438'400;  // 2026-03-02T08:00:00Z

/// A tracker that has recorded 20 seconds of "letter".
class TimeFaults : public testing::Test {
  protected:
    TimeFaults() {
        desk_.show("org.example.Editor", "letter");
        desk_.tracker().setEnabled(true);
        desk_.pass(20);
    }

    using Span = std::pair<double, double>;
    /// Start and end of each recording, in seconds from the beginning, in order of their making.
    std::vector<Span> spans() {
        std::vector<Span> result;
        for (const auto& recording : desk_.context()->fetch<OrvaneRecording>(
                 {.entityName = std::string(OrvaneRecording::entityName())}))
            result.emplace_back(secondsSinceEpoch(*recording->startDate()) - epoch,
                                secondsSinceEpoch(*recording->endDate()) - epoch);
        return result;
    }

    test::TemporaryFolder folder_;
    Desk desk_{folder_.path(), {}};
};

TEST_F(TimeFaults, AClockThatIsSetBackAndForthMovesNoOtherSpan) {
    desk_.platform().clock().stepWallTime(-1h);
    desk_.pass(10);
    // It ends before it began until the clock has made up for the step.
    EXPECT_EQ(spans(), (std::vector<Span>{{0, -3570}}));
    desk_.show("org.example.Editor", "plan");
    desk_.pass(20);
    desk_.platform().clock().stepWallTime(1h);
    desk_.show("org.example.Editor", "letter");
    desk_.pass(20);
    EXPECT_EQ(spans(), (std::vector<Span>{{0, -3560}, {-3560, 60}, {60, 70}}));
}

TEST_F(TimeFaults, AClockThatIsSetRightAgainLeavesNoTrace) {
    desk_.platform().clock().stepWallTime(-1h);
    desk_.pass(10);
    desk_.platform().clock().stepWallTime(1h);
    desk_.pass(10);
    EXPECT_EQ(spans(), (std::vector<Span>{{0, 40}}));
}

TEST_F(TimeFaults, ASuspendedComputerRecordsNothing) {
    desk_.pass(5);
    desk_.sleep();
    // The monotonic clock stands still meanwhile, and with it what is pending.
    desk_.platform().clock().stepWallTime(8h);
    desk_.pass(60);
    EXPECT_EQ(spans(), (std::vector<Span>{{0, 25}}));
    desk_.activate();
    desk_.pass(10);
    constexpr double hours = 8 * 3600;
    EXPECT_EQ(spans(), (std::vector<Span>{{0, 25}, {hours + 85, hours + 95}}));
}

TEST_F(TimeFaults, ATimeZoneThatChangesMovesTheDaysAndNoSpan) {
    const Date now = desk_.platform().clock().now();
    {
        const host::LocalTimeZone zone("UTC");
        desk_.pass(10);
        EXPECT_EQ(secondsSinceEpoch(orvaneDayStart(now)), epoch - 8 * 3600);
    }
    {
        const host::LocalTimeZone zone("Pacific/Auckland");  // 13 hours ahead in March
        desk_.pass(10);
        EXPECT_EQ(secondsSinceEpoch(orvaneDayStart(now)), epoch - 21 * 3600);
    }
    EXPECT_EQ(spans(), (std::vector<Span>{{0, 40}}));
}

}  // namespace
}  // namespace orvane::trials
