#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <memory>

#include "platform/linux/desktop_choice.h"
#include "platform/linux/linux_platform.h"
#include "platform/linux/wayland/ext_idle_source.h"
#include "tests/platform/main_loop_wait.h"
#include "tests/platform/wayland/fake_compositor.h"

namespace orvane {
namespace {

using Texts = std::vector<std::string>;

class IdleSourceTest : public ::testing::Test {
  protected:
    IdleSourceTest() {
        std::string pattern = "/tmp/orvane-wayland-XXXXXX";
        folder_ = mkdtemp(pattern.data());
        setenv("XDG_RUNTIME_DIR", folder_.c_str(), 1);
        setenv("WAYLAND_DISPLAY", "wayland-7", 1);
        unsetenv("DISPLAY");
    }
    ~IdleSourceTest() override {
        source_.reset();
        display_.reset();
        compositor_.reset();
        std::filesystem::remove_all(folder_);
    }

    void startCompositor(std::uint32_t version) {
        compositor_ = std::make_unique<FakeCompositor>(version);
        compositor_->addSeat();
    }
    void connect(bool heldBack) {
        display_ = std::make_unique<WaylandDisplay>();
        source_ = std::make_unique<ExtIdleSource>(*display_, heldBack);
        source_->onAvailabilityChanged = [this](bool available) { told_ += available ? '+' : '-'; };
        display_->start();
    }
    double seconds() { return source_->idleSeconds().value_or(-1); }
    bool becomes(double least, double most) {
        return waitUntil([&] { return seconds() >= least && seconds() <= most; });
    }

    std::string folder_;
    std::unique_ptr<FakeCompositor> compositor_;
    std::unique_ptr<WaylandDisplay> display_;
    std::unique_ptr<ExtIdleSource> source_;
    std::string told_;
};

TEST_F(IdleSourceTest, InputAloneCountsUnlessOtherwiseWishedOrUnknown) {
    struct Case {
        std::uint32_t version;
        bool heldBack;
        Texts kinds;
    };
    for (const auto& each :
         {Case{2, false, {"input"}}, Case{2, true, {"held back"}}, Case{1, false, {"held back"}}}) {
        startCompositor(each.version);
        connect(each.heldBack);
        EXPECT_EQ(compositor_->notifications(), each.kinds);
        EXPECT_EQ(source_->name().find("input alone") != std::string::npos, each.kinds[0] == "input");
        source_.reset();
        display_.reset();
        compositor_.reset();
    }
}

TEST_F(IdleSourceTest, TheLastInputOnAnySeatCounts) {
    startCompositor(2);
    connect(false);
    EXPECT_EQ(seconds(), 0);
    EXPECT_TRUE(comesToRest());
    compositor_->idle(0);
    // The rest began a time-out before it was told.
    EXPECT_TRUE(becomes(2, 60));
    compositor_->addSeat();
    EXPECT_TRUE(becomes(0, 0)) << "somebody else may be at work";
    ASSERT_TRUE(waitUntil([this] { return compositor_->notifications().size() == 2; }));
    compositor_->idle(1);
    EXPECT_TRUE(becomes(2, 60));
    compositor_->resume(0);
    EXPECT_TRUE(becomes(0, 0));
    compositor_->idle(0);
    EXPECT_TRUE(becomes(2, 60));
    compositor_->resume(1);
    EXPECT_TRUE(becomes(0, 0));
    compositor_->removeSeat();
    EXPECT_TRUE(becomes(2, 60));
    compositor_->removeSeat();
    EXPECT_TRUE(becomes(-1, -1)) << "nobody is there";
    EXPECT_FALSE(source_->isAvailable());
}

TEST_F(IdleSourceTest, ACompositorThatComesLateOrIsSlowOrDies) {
    connect(false);
    EXPECT_FALSE(source_->isAvailable());
    startCompositor(2);
    EXPECT_TRUE(waitUntil([this] { return source_->isAvailable(); }));
    compositor_->idle(0);
    EXPECT_TRUE(becomes(2, 60));
    compositor_.reset();
    EXPECT_TRUE(becomes(-1, -1));
    EXPECT_FALSE(display_->answers());
    int steps = 0;
    while (steps < 1000 && g_main_context_iteration(nullptr, FALSE) != 0) ++steps;
    EXPECT_LT(steps, 1000) << "nothing is due again and again";
    startCompositor(2);
    EXPECT_TRUE(becomes(0, 0)) << "what was before is not known";
    EXPECT_TRUE(waitUntil([this] { return told_ == "+-+"; })) << told_;

    source_.reset();
    display_.reset();
    told_.clear();
    compositor_->hold(true);
    connect(false);
    EXPECT_FALSE(source_->isAvailable()) << "it took the connection and has not spoken yet";
    {
        // Nor is it time for the X server on it.
        LinuxPlatform platform;
        EXPECT_TRUE(platform.desktop().compositorAnswers());
        EXPECT_FALSE(platform.desktop().isDecided());
    }
    EXPECT_FALSE(source_->isDecided());
    compositor_->hold(false);
    EXPECT_TRUE(waitUntil([this] { return source_->isDecided(); }));
    EXPECT_EQ(told_, "+") << "whoever waits for it must not look too early";
}

}  // namespace
}  // namespace orvane
