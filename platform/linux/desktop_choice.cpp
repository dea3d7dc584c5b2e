#include "platform/linux/desktop_choice.h"

#include <algorithm>
#include <utility>

namespace orvane {

namespace {

/// Shortcomings of all that stand before the one in use.
template <typename Range, typename Access>
std::vector<Shortcoming> shortcomingsBefore(const Range& range, const void* inUse, Access access) {
    std::vector<Shortcoming> result;
    for (const auto& each : range) {
        const auto* service = access(each);
        if (service == nullptr) continue;
        if (auto shortcoming = service->shortcoming()) result.push_back(std::move(*shortcoming));
        if (service == inUse) break;
    }
    return result;
}

}  // namespace

DesktopChoice::DesktopChoice() = default;

DesktopChoice::~DesktopChoice() = default;

void DesktopChoice::add(std::unique_ptr<DesktopBackend> backend) {
    candidates_.push_back(std::make_unique<Candidate>());
    candidates_.back()->backend = std::move(backend);
    watch(*candidates_.back());
}

void DesktopChoice::addForNoCompositor(MakeBackend make) {
    candidates_.push_back(std::make_unique<Candidate>());
    candidates_.back()->makeForNoCompositor = std::move(make);
}

void DesktopChoice::add(std::unique_ptr<IdleSource> source) {
    source->onAvailabilityChanged = [this](bool) { chooseIdleSource(); };
    idleSources_.push_back(std::move(source));
}

void DesktopChoice::add(std::unique_ptr<ScreenPowerSource> source) {
    source->onChanged = [this] {
        if (!isStarted_) return;
        tellSleep();
        changed();
    };
    screenPowerSources_.push_back(std::move(source));
}

void DesktopChoice::watch(Candidate& candidate) {
    auto& backend = *candidate.backend;
    backend.onAvailabilityChanged = [this, &candidate](bool available) {
        // What an old connection said of the screens holds no longer.
        if (!available) candidate.isAsleep = false;
        choose();
    };
    backend.onActiveWindowChanged = [this, &backend] {
        if (backend_ == &backend && onActiveWindowChanged) onActiveWindowChanged();
    };
    backend.onScreenSleepChanged = [this, &candidate](bool asleep) {
        candidate.isAsleep = asleep;
        if (isStarted_) tellSleep();
    };
}

void DesktopChoice::start() {
    isStarted_ = true;
    makeMissing();
    for (const auto& candidate : candidates_) {
        if (backend_ == nullptr && candidate->backend && candidate->backend->isAvailable()) {
            backend_ = candidate->backend.get();
        }
    }
    toldAvailable_ = isAvailable();
    chooseIdleSource();
    if (areScreensOff()) sleepTimer_.start(0, [this] { tellSleep(); });
}

void DesktopChoice::makeMissing() {
    for (const auto& candidate : candidates_) {
        if (!candidate->makeForNoCompositor) continue;
        if (compositorAnswers_) {
            if (backend_ == candidate->backend.get()) backend_ = nullptr;
            candidate->backend.reset();
            candidate->isAsleep = false;
        } else if (!candidate->backend) {
            candidate->backend = candidate->makeForNoCompositor();
            if (candidate->backend) watch(*candidate);
        }
    }
}

void DesktopChoice::setCompositorAnswers(bool answers) {
    if (std::exchange(compositorAnswers_, answers) == answers || !isStarted_) return;
    makeMissing();
    choose();
}

void DesktopChoice::choose() {
    if (!isStarted_) return;
    DesktopBackend* best = nullptr;
    for (const auto& candidate : candidates_) {
        if (best == nullptr && candidate->backend && candidate->backend->isAvailable()) {
            best = candidate->backend.get();
        }
    }
    if (best != backend_ || toldAvailable_ != (best != nullptr)) {
        backend_ = best;
        if (std::exchange(toldAvailable_, isAvailable()) != isAvailable()) {
            // Whoever hears of a desktop that is back takes its screens to be on.
            if (isAvailable()) toldAsleep_ = false;
            if (onAvailabilityChanged) onAvailabilityChanged(isAvailable());
        } else if (onActiveWindowChanged) {
            onActiveWindowChanged();
        }
        tellSleep();
    }
    // Even one that was not chosen may now have other shortcomings.
    changed();
}

void DesktopChoice::chooseIdleSource() {
    if (!isStarted_) return;
    const auto best = std::find_if(idleSources_.begin(), idleSources_.end(),
                                   [](const auto& source) { return source->isAvailable(); });
    idleSource_ = best != idleSources_.end() ? best->get() : nullptr;
    changed();
}

const DesktopChoice::Candidate* DesktopChoice::candidateInUse() const {
    const auto found = std::find_if(candidates_.begin(), candidates_.end(), [this](const auto& candidate) {
        return candidate->backend.get() == backend_;
    });
    return backend_ != nullptr && found != candidates_.end() ? found->get() : nullptr;
}

bool DesktopChoice::areScreensOff() const {
    const auto* inUse = candidateInUse();
    return (inUse != nullptr && inUse->isAsleep) ||
           std::any_of(screenPowerSources_.begin(), screenPowerSources_.end(),
                       [](const auto& source) { return source->isAvailable() && source->areScreensOff(); });
}

void DesktopChoice::tellSleep() {
    const bool asleep = areScreensOff();
    if (std::exchange(toldAsleep_, asleep) != asleep && onScreenSleepChanged) onScreenSleepChanged(asleep);
}

void DesktopChoice::changed() {
    if (onChoiceChanged) onChoiceChanged();
}

ScreenPowerSource* DesktopChoice::screenPowerInUse() const {
    const auto found = std::find_if(screenPowerSources_.begin(), screenPowerSources_.end(),
                                    [](const auto& source) { return source->isAvailable(); });
    return found != screenPowerSources_.end() ? found->get() : nullptr;
}

std::vector<Shortcoming> DesktopChoice::windowShortcomings() const {
    return shortcomingsBefore(candidates_, backend_,
                              [](const auto& candidate) { return candidate->backend.get(); });
}

std::vector<Shortcoming> DesktopChoice::idleShortcomings() const {
    return shortcomingsBefore(idleSources_, idleSource_, [](const auto& source) { return source.get(); });
}

std::vector<Shortcoming> DesktopChoice::screenPowerShortcomings() const {
    return shortcomingsBefore(screenPowerSources_, screenPowerInUse(),
                              [](const auto& source) { return source.get(); });
}

std::string DesktopChoice::name() const { return backend_ != nullptr ? backend_->name() : "none"; }

bool DesktopChoice::isDecided() const {
    return std::all_of(candidates_.begin(), candidates_.end(),
                       [](const auto& candidate) {
                           return !candidate->backend || candidate->backend->isDecided();
                       }) &&
           std::all_of(idleSources_.begin(), idleSources_.end(),
                       [](const auto& source) { return source->isDecided(); });
}

std::optional<DesktopWindow> DesktopChoice::activeWindow() {
    return backend_ != nullptr ? backend_->activeWindow() : std::nullopt;
}

std::vector<DesktopWindow> DesktopChoice::windows() {
    return backend_ != nullptr ? backend_->windows() : std::vector<DesktopWindow>();
}

std::optional<double> DesktopChoice::idleSeconds() {
    // The backend is asked in any case: some notice dark screens only when they are looked at.
    const auto own = backend_ != nullptr ? backend_->idleSeconds() : std::nullopt;
    const auto told = idleSource_ != nullptr ? idleSource_->idleSeconds() : std::nullopt;
    return told ? told : own;
}

}  // namespace orvane
