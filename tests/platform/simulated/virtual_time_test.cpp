#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "platform/simulated/simulated_platform.h"

namespace orvane {
namespace {

using std::chrono::microseconds;
using std::chrono::seconds;

class VirtualTime : public testing::Test {
  protected:
    void request(std::string name, double delay) {
        loop_.performSelector(&target_, name, delay, [this, name] { note(name); });
    }
    void note(const std::string& name) { ran_.push_back(name + "@" + std::to_string(clock_.time().count())); }

    VirtualClock clock_;
    VirtualRunLoop loop_{clock_};
    int target_ = 0;
    int otherTarget_ = 0;
    std::vector<std::string> ran_;
};

using Names = std::vector<std::string>;

TEST_F(VirtualTime, RequestsRunInOrderOfDueTimeThenOfBeingMade) {
    request("late", 3);
    request("first", 1);
    request("second", 1);
    request("beyond", 3.000001);
    loop_.advanceTo(seconds(3));
    EXPECT_EQ(ran_, (Names{"first@1000000", "second@1000000", "late@3000000"}));
    EXPECT_EQ(loop_.pendingRequestCount(&target_), 1u);
    loop_.advanceTo(seconds(9));
    EXPECT_EQ(ran_.back(), "beyond@3000001");
    EXPECT_EQ(clock_.time(), seconds(9));
}

TEST_F(VirtualTime, RequestsMadeWhileOthersRunCountToo) {
    int left = 3;
    std::function<void()> chain = [&] {
        note("chain");
        if (--left > 0) loop_.performSelector(&target_, "chain", 10, chain);
    };
    loop_.performSelector(&target_, "chain", 0, chain);
    request("between", 15);
    loop_.advanceTo(seconds(20));
    EXPECT_EQ(ran_, (Names{"chain@0", "chain@10000000", "between@15000000", "chain@20000000"}));
}

TEST_F(VirtualTime, ARequestMayCancelThoseDueWithIt) {
    loop_.performSelector(&target_, "cancel", 1, [&] {
        loop_.cancelPreviousPerformRequests(&target_, "poll");
        note("cancel");
    });
    request("poll", 1);
    request("other", 1);
    loop_.performSelector(&otherTarget_, "poll", 1, [&] { note("other target"); });
    loop_.advanceTo(seconds(2));
    EXPECT_EQ(ran_, (Names{"cancel@1000000", "other@1000000", "other target@1000000"}));

    request("a", 1);
    request("b", 2);
    loop_.performSelector(&otherTarget_, "c", 1, [] {});
    loop_.cancelPreviousPerformRequests(&target_);
    EXPECT_EQ(loop_.pendingRequestCount(&target_), 0u);
    EXPECT_EQ(loop_.pendingRequestCount(), 1u);
}

TEST_F(VirtualTime, OverdueRequestsRunWithoutTurningTheClockBack) {
    request("overdue", 1);
    loop_.moveTimeOnly(seconds(5));
    EXPECT_TRUE(ran_.empty());
    loop_.advanceTo(seconds(5));
    EXPECT_EQ(ran_, (Names{"overdue@5000000"}));
}

TEST_F(VirtualTime, DelaysThatAreNoUsableNumberAreHarmless) {
    request("negative", -4);
    request("nan", std::numeric_limits<double>::quiet_NaN());
    request("endless", std::numeric_limits<double>::infinity());
    request("tiny", 0.0000004);
    loop_.advanceTo(microseconds(0));
    EXPECT_EQ(ran_, (Names{"negative@0", "nan@0", "tiny@0"}));
    EXPECT_EQ(loop_.pendingRequestCount(), 1u);
}

TEST_F(VirtualTime, WallClockCountsExactlyAndJumpsAlone) {
    clock_.setWallTime(microseconds(1'772'438'400'900'000));
    loop_.advanceTo(microseconds(100'000));
    // 0.9 + 0.1 in double precision need not be a whole second; the clock's microseconds are.
    EXPECT_EQ(secondsSinceEpoch(clock_.now()), 1'772'438'401.0);
    clock_.stepWallTime(microseconds(-20'500'000));
    EXPECT_EQ(secondsSinceEpoch(clock_.now()), 1'772'438'380.5);
    EXPECT_EQ(clock_.time(), microseconds(100'000));
}

TEST(RepeatableUuids, DependOnTheSeedAloneAndAreVersion4) {
    RepeatableUuidSource first(7);
    RepeatableUuidSource second(7);
    RepeatableUuidSource other(8);
    const auto uuid = first.next();
    EXPECT_EQ(uuid, second.next());
    EXPECT_NE(uuid, other.next());
    EXPECT_NE(uuid, first.next());
    for (int i = 0; i < 50; ++i) {
        const auto bytes = other.next();
        EXPECT_EQ(bytes[6] >> 4, 4);
        EXPECT_EQ(bytes[8] >> 6, 2);
    }
    second.setSeed(7);
    EXPECT_EQ(uuid, second.next());
}

}  // namespace
}  // namespace orvane
