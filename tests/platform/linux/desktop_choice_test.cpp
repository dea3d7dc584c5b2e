#include "platform/linux/desktop_choice.h"

#include <gtest/gtest.h>

#include <utility>

#include "desktop_fixture.h"

namespace orvane::testing {
namespace {

class Backend : public DesktopBackend {
  public:
    Backend(std::string name, bool available) : name_(std::move(name)), available_(available) {}

    std::string name() const override { return name_; }
    bool isAvailable() const override { return available_; }
    std::optional<DesktopWindow> activeWindow() override { return DesktopWindow{1, 2, 0, name_, {}, {}, {}}; }
    std::vector<DesktopWindow> windows() override { return {*activeWindow()}; }
    std::optional<double> idleSeconds() override { return ownIdle; }
    std::optional<Shortcoming> shortcoming() const override {
        return problem.empty() ? std::nullopt : std::optional<Shortcoming>({problem, "mend"});
    }

    void setAvailable(bool available) {
        available_ = available;
        onAvailabilityChanged(available);
    }
    std::optional<double> ownIdle;
    std::string problem;

  private:
    const std::string name_;
    bool available_;
};

class Idle : public IdleSource {
  public:
    explicit Idle(double seconds) : seconds_(seconds) {}
    std::string name() const override { return std::to_string(seconds_); }
    bool isAvailable() const override { return available_; }
    std::optional<double> idleSeconds() override { return seconds_; }
    void setAvailable(bool available) {
        available_ = available;
        onAvailabilityChanged(available);
    }

  private:
    const double seconds_;
    bool available_ = false;
};

class Screens : public ScreenPowerSource {
  public:
    std::string name() const override { return "screens"; }
    bool isAvailable() const override { return true; }
    bool areScreensOff() const override { return off; }
    bool off = false;
};

class DesktopChoiceTest : public ::testing::Test {
  protected:
    DesktopChoiceTest() {
        choice_.onAvailabilityChanged = [this](bool available) { told_ += available ? "there " : "gone "; };
        choice_.onActiveWindowChanged = [this] { told_ += "window "; };
        choice_.onScreenSleepChanged = [this](bool asleep) { told_ += asleep ? "off " : "on "; };
    }

    template <typename Service>
    Service& add(std::unique_ptr<Service> service) {
        auto& result = *service;
        choice_.add(std::move(service));
        return result;
    }
    Backend& addBackend(const std::string& name, bool available) {
        return add(std::make_unique<Backend>(name, available));
    }
    std::string taken() { return std::exchange(told_, {}); }

    DesktopChoice choice_;
    std::string told_;
};

TEST_F(DesktopChoiceTest, TheFirstThatAnswersIsUsedAndTheOthersAreNotHeard) {
    auto& best = addBackend("best", false);
    auto& good = addBackend("good", true);
    auto& last = addBackend("last", true);
    choice_.start();
    EXPECT_EQ(choice_.name(), "good");
    EXPECT_EQ(taken(), "");
    last.onActiveWindowChanged();
    last.onScreenSleepChanged(true);
    EXPECT_EQ(taken(), "");
    good.onActiveWindowChanged();
    EXPECT_EQ(taken(), "window ");

    best.setAvailable(true);
    EXPECT_EQ(taken(), "window ") << "a better one answers";
    EXPECT_EQ(choice_.activeWindow()->title, "best");
    best.setAvailable(false);
    EXPECT_EQ(taken(), "window ");
    good.setAvailable(false);
    EXPECT_EQ(taken(), "window off ") << "the last one's screens are off";
    last.setAvailable(false);
    EXPECT_EQ(taken(), "gone on ");
    EXPECT_FALSE(choice_.activeWindow());
    EXPECT_EQ(choice_.name(), "none");
    good.setAvailable(true);
    EXPECT_EQ(taken(), "there ");
}

TEST_F(DesktopChoiceTest, X11IsNotEvenMadeWhileACompositorAnswers) {
    Backend* made = nullptr;
    choice_.addForNoCompositor([&] {
        auto backend = std::make_unique<Backend>("x11", true);
        made = backend.get();
        return backend;
    });
    choice_.setCompositorAnswers(true);
    choice_.start();
    EXPECT_EQ(made, nullptr);
    EXPECT_FALSE(choice_.isAvailable());
    choice_.setCompositorAnswers(false);
    EXPECT_EQ(choice_.name(), "x11");
    EXPECT_EQ(taken(), "there ");
    made->onScreenSleepChanged(true);
    EXPECT_EQ(taken(), "off ");
    choice_.setCompositorAnswers(true);
    EXPECT_EQ(taken(), "gone on ");
    EXPECT_FALSE(choice_.isAvailable());
}

TEST_F(DesktopChoiceTest, IdleTimeAndScreensAreChosenApart) {
    auto& backend = addBackend("x11", true);
    auto& better = add(std::make_unique<Idle>(3));
    auto& other = add(std::make_unique<Idle>(5));
    auto& screens = add(std::make_unique<Screens>());
    screens.off = true;
    choice_.start();
    EXPECT_TRUE(runUntil([this] { return told_ == "off "; })) << "they were off already";
    EXPECT_EQ(choice_.idleSeconds(), std::nullopt);
    backend.ownIdle = 7;
    EXPECT_EQ(choice_.idleSeconds(), 7);
    other.setAvailable(true);
    EXPECT_EQ(choice_.idleSeconds(), 5);
    better.setAvailable(true);
    EXPECT_EQ(choice_.idleSeconds(), 3);
    better.setAvailable(false);
    EXPECT_EQ(choice_.idleSeconds(), 5);

    backend.onScreenSleepChanged(true);
    screens.off = false;
    screens.onChanged();
    EXPECT_EQ(taken(), "off ") << "one of the two still says so";
    backend.onScreenSleepChanged(false);
    EXPECT_EQ(taken(), "on ");
}

TEST_F(DesktopChoiceTest, ShortcomingsOfWhatIsWorseThanTheOneInUseDoNotMatter) {
    addBackend("best", false).problem = "best is not installed";
    auto& used = addBackend("used", true);
    addBackend("worse", false).problem = "worse is not installed";
    used.problem = "used lacks a thing";
    choice_.start();
    const auto found = choice_.windowShortcomings();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].problem, "best is not installed");
    EXPECT_EQ(found[1].problem, "used lacks a thing");
    used.setAvailable(false);
    EXPECT_EQ(choice_.windowShortcomings().size(), 3U);
}

}  // namespace
}  // namespace orvane::testing
