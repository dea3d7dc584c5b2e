#include "platform/linux/glib_run_loop.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>

#include "desktop_fixture.h"

namespace orvane::testing {
namespace {

constexpr double never = 1e12;

TEST(GlibRunLoopTest, RunsInOrderAndLetsTheHostWorkInBetween) {
    GlibRunLoop loop;
    std::string order;
    int target = 0;
    const auto append = [&](char letter) { return [&order, letter] { order += letter; }; };
    loop.performSelector(&target, "x", never, append('!'));
    loop.performSelector(&target, "x", std::numeric_limits<double>::infinity(), append('!'));
    loop.performSelector(&target, "x", -5, append('a'));
    loop.performSelector(&target, "x", 0, [&] {
        order += 'b';
        loop.performSelector(&target, "x", 0, append('d'));
        EXPECT_EQ(loop.pendingRequestCount(&target), 4U);
    });
    loop.performSelector(&target, "x", std::numeric_limits<double>::quiet_NaN(), append('c'));
    while (order.size() < 3) g_main_context_iteration(nullptr, TRUE);
    EXPECT_EQ(order, "abc") << "what an action asks for waits for the next round";
    EXPECT_TRUE(runUntil([&] { return order.size() == 4; }));
    EXPECT_EQ(order, "abcd");
    EXPECT_EQ(loop.pendingRequestCount(&target), 2U);
}

TEST(GlibRunLoopTest, CancelsByTargetAndSelector) {
    GlibRunLoop loop;
    std::string order;
    int one = 0;
    int two = 0;
    const auto append = [&](char letter) { return [&order, letter] { order += letter; }; };
    loop.performSelector(&one, "poll", 0, append('!'));
    loop.performSelector(&one, "other", 0, [&] {
        order += 'a';
        loop.cancelPreviousPerformRequests(&two);
    });
    loop.performSelector(&one, "poll", never, append('!'));
    loop.performSelector(&two, "poll", 0, append('!'));
    loop.performSelector(&one, "third", 0, append('b'));
    // What an action holds may come back when it is dropped.
    const auto sentinel =
        std::shared_ptr<void>(&loop, [&](void*) { loop.cancelPreviousPerformRequests(&two); });
    loop.performSelector(&one, "poll", never, [sentinel] {});
    loop.cancelPreviousPerformRequests(&one, "poll");
    EXPECT_EQ(loop.pendingRequestCount(&one), 2U);
    EXPECT_TRUE(runUntil([&] { return order.size() == 2; }));
    EXPECT_EQ(order, "ab");
    EXPECT_EQ(loop.pendingRequestCount(&two), 0U);
}

TEST(GlibRunLoopTest, AnActionMayRunTheLoopOrEndIt) {
    auto loop = std::make_unique<GlibRunLoop>();
    int target = 0;
    bool isInner = false;
    bool isDone = false;
    loop->performSelector(&target, "outer", 0, [&] {
        loop->performSelector(&target, "inner", 0, [&] { isInner = true; });
        EXPECT_TRUE(runUntil([&] { return isInner; }));
        loop->performSelector(&target, "dropped", 0, [] { FAIL(); });
        loop.reset();
        isDone = true;
    });
    EXPECT_TRUE(runUntil([&] { return isDone; }));
    while (g_main_context_iteration(nullptr, FALSE) != 0) {
    }
}

}  // namespace
}  // namespace orvane::testing
