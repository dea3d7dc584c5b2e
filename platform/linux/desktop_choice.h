#pragma once

#include <memory>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"
#include "platform/linux/idle_source.h"
#include "platform/linux/main_loop_timer.h"
#include "platform/linux/screen_power_source.h"

namespace orvane {

/// The desktop as the best of several backends tells it. The first one in order that answers is used, and
/// another one as soon as it stops or a better one begins to answer. Idle time and screen power are chosen
/// apart from the windows: the first idle source that answers tells the one, and every screen power source
/// may tell the other; where none does, the backend in use may know by itself.
///
/// Callbacks must not destroy the choice. Main thread only.
class DesktopChoice : public DesktopBackend {
  public:
    using MakeBackend = std::function<std::unique_ptr<DesktopBackend>()>;

    DesktopChoice();
    ~DesktopChoice() override;
    DesktopChoice(const DesktopChoice&) = delete;
    DesktopChoice& operator=(const DesktopChoice&) = delete;

    // Each kind is added best first, before `start`.

    void add(std::unique_ptr<DesktopBackend> backend);
    /// One that must not be asked while a Wayland compositor answers, since it would show no more than the
    /// X11 programs on it, and asking would even start the X server for them. Made whenever no compositor
    /// answers and destroyed when one does.
    void addForNoCompositor(MakeBackend make);
    void add(std::unique_ptr<IdleSource> source);
    void add(std::unique_ptr<ScreenPowerSource> source);

    /// Chooses for the first time, in silence: whoever starts it looks by himself. What changes later is
    /// told. Screens that are off already are told later on the main loop.
    void start();
    /// Whether a Wayland compositor answers, or took the connection and may answer soon; false until this
    /// says otherwise.
    void setCompositorAnswers(bool answers);

    /// Called after any change of what the accessors below tell.
    std::function<void()> onChoiceChanged;

    // For diagnoses.

    bool compositorAnswers() const { return compositorAnswers_; }
    /// None when no backend answers.
    DesktopBackend* backendInUse() const { return backend_; }
    /// None when no source answers; the backend in use may know by itself.
    IdleSource* idleSourceInUse() const { return idleSource_; }
    /// The first one that answers; none when none does.
    ScreenPowerSource* screenPowerInUse() const;
    bool areScreensOff() const;
    /// What keeps better backends or sources than those in use from answering on this desktop, best first.
    std::vector<Shortcoming> windowShortcomings() const;
    std::vector<Shortcoming> idleShortcomings() const;
    std::vector<Shortcoming> screenPowerShortcomings() const;

    std::string name() const override;
    bool isAvailable() const override { return backend_ != nullptr; }
    bool isDecided() const override;
    std::optional<DesktopWindow> activeWindow() override;
    std::vector<DesktopWindow> windows() override;
    std::optional<double> idleSeconds() override;
    bool tellsScreenSleep() const override { return true; }

  private:
    struct Candidate {
        /// Empty for one that is always there.
        MakeBackend makeForNoCompositor;
        std::unique_ptr<DesktopBackend> backend;
        /// What the backend itself said last.
        bool isAsleep = false;
    };

    void makeMissing();
    void watch(Candidate& candidate);
    void choose();
    void chooseIdleSource();
    void tellSleep();
    void changed();
    const Candidate* candidateInUse() const;

    std::vector<std::unique_ptr<Candidate>> candidates_;
    std::vector<std::unique_ptr<IdleSource>> idleSources_;
    std::vector<std::unique_ptr<ScreenPowerSource>> screenPowerSources_;
    bool isStarted_ = false;
    bool compositorAnswers_ = false;
    DesktopBackend* backend_ = nullptr;
    IdleSource* idleSource_ = nullptr;
    bool toldAvailable_ = false;
    bool toldAsleep_ = false;
    MainLoopTimer sleepTimer_;
};

}  // namespace orvane
