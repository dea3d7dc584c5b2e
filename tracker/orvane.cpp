#include "tracker/orvane.h"

#include <mutex>

#include "foundation/key_conversion.h"
#include "tracker/postponed_samples.h"
#include "util/color_text.h"
#include "util/day_boundaries.h"

namespace orvane {

namespace {

constexpr const char* pollSelector = "poll";

std::mutex sharedMutex;
Ref<Orvane> shared;

/// Brackets a change of one key for its observers.
class AnnouncedChange {
  public:
    AnnouncedChange(KeyedObject& object, std::string_view key) : object_(object), key_(key) {
        object_.willChangeValueForKey(key_);
    }
    ~AnnouncedChange() { object_.didChangeValueForKey(key_); }
    AnnouncedChange(const AnnouncedChange&) = delete;
    AnnouncedChange& operator=(const AnnouncedChange&) = delete;

  private:
    KeyedObject& object_;
    std::string_view key_;
};

}  // namespace

const KeyTable& Orvane::classKeyTable() {
    static const KeyTable table{
        "Orvane",
        nullptr,
        {keys::readWrite<"enabled", &Orvane::enabled, &Orvane::setEnabled>(),
         keys::readWrite<"idleThreshold", &Orvane::idleThreshold, &Orvane::setIdleThreshold>(),
         keys::readWrite<"idleTime", &Orvane::idleTime, &Orvane::setIdleTime>(),
         keys::readWrite<"currentRecording", &Orvane::currentRecording, &Orvane::setCurrentRecording>()}};
    return table;
}

Orvane& Orvane::sharedOrvane() { return sharedOrvane(std::nullopt); }

Orvane& Orvane::sharedOrvane(const std::optional<std::filesystem::path>& url) {
    Orvane* tracker = nullptr;
    bool isNew = false;
    {
        const std::lock_guard lock(sharedMutex);
        isNew = !shared;
        if (isNew) {
            shared = makeRef<Orvane>();
            shared->setUrl(url);
        }
        tracker = shared.get();
    }
    // Outside the lock: delivering the value may run a poll, and whoever that tells may ask for the tracker.
    if (isNew) tracker->followDefaults();
    return *tracker;
}

void Orvane::resetShared() {
    Ref<Orvane> ended;
    const std::lock_guard lock(sharedMutex);
    std::swap(ended, shared);
}

Orvane::Orvane() : postponed_(std::make_unique<PostponedSamples>()), platform_(Platform::current()) {
    NotificationCenter& workspace = platform_.workspace().notificationCenter();
    const auto sleeps = [this](const Notification& notification) { willSleep(notification); };
    workspace.addObserver(
        this, [this](const Notification& notification) { appActivated(notification); },
        NSWorkspaceDidActivateApplicationNotification);
    workspace.addObserver(this, sleeps, NSWorkspaceScreensDidSleepNotification);
    workspace.addObserver(this, sleeps, NSWorkspaceWillSleepNotification);
    platform_.defaultNotificationCenter().addObserver(
        this, [this](const Notification& notification) { willTerminate(notification); },
        NSApplicationWillTerminateNotification, &platform_.hostApplication());
}

Orvane::~Orvane() {
    platform_.runLoop().cancelPreviousPerformRequests(this);
    platform_.defaultNotificationCenter().removeObserver(this);
    platform_.workspace().notificationCenter().removeObserver(this);
}

void Orvane::followDefaults() {
    // First the rules: the other value may begin to record.
    titleRulesBinding_ = platform_.userDefaults().bind(
        orvaneTitleRulesDefault, [this](const Value& value) { takeUserTitleRules(value); });
    enabledBinding_ = platform_.userDefaults().bind(orvaneEnabledDefault,
                                                    [this](const Value& value) { setEnabled(value); });
}

void Orvane::start(const void*) { poll(); }

void Orvane::stop(const void*) { platform_.runLoop().cancelPreviousPerformRequests(this); }

void Orvane::appActivated(const Notification& notification) {
    if (enabled_.isNone()) return;
    // Lock and log-in screen never restart tracking. Who is in front now counts, not whom the notice names.
    const auto frontmost = frontmostApplication();
    if (frontmost && frontmost->bundleIdentifier == loginWindowIdentifier) return;
    if (isLogging()) log("Orvaning started due to app activation " + notification.userInfo.description());
    platform_.runLoop().cancelPreviousPerformRequests(this, pollSelector);
    start(this);
}

void Orvane::willSleep(const Notification&) { endRecording("Orvaning stopped due to sleep"); }

void Orvane::willTerminate(const Notification&) { endRecording("Orvaning stopped due to termination"); }

void Orvane::endRecording(const char* logLine) {
    storeStack_.followFile();
    if (isLogging() && currentRecording_) log(logLine);
    const Date now = orvaneSecondStart(platform_.clock().now());
    const bool waits = !postponed_->isEmpty();
    if (waits)
        postponed_->add({.kind = Sample::Kind::end, .second = now}, nullptr);
    else if (currentRecording_)
        currentRecording_->setEndDate(now);
    setCurrentRecording(nullptr);
    if (ManagedObjectContext* context = managedObjectContext()) {
        std::optional<WriteScope> scope;
        if (waits) scope.emplace(*context);
        if (scope && !scope->isLockedOut()) recordPostponed(*context);
        // What cannot be saved stays in the context for the next save.
        context->save();
    }
    stop(nullptr);
}

void Orvane::schedulePoll(double delay) {
    platform_.runLoop().performSelector(this, pollSelector, delay, [this] { poll(); });
}

void Orvane::setEnabled(const Value& enabled) {
    {
        const AnnouncedChange change(*this, "enabled");
        enabled_ = enabled;
    }
    if (enabled_.isNone())
        platform_.runLoop().cancelPreviousPerformRequests(this, pollSelector);
    else
        start(this);
}

void Orvane::setIdleThreshold(std::optional<double> minutes) {
    const AnnouncedChange change(*this, "idleThreshold");
    idleThreshold_ = minutes;
}

void Orvane::setTitleRules(TitleRules rules) {
    hostTitleRules_ = std::move(rules);
    applyTitleRules();
}

void Orvane::takeUserTitleRules(const Value& value) {
    Error error;
    auto rules = TitleRules::read(value, &error);
    // Nobody can tell what a rule was meant to hide that cannot be read.
    if (!rules) log("Every window title is left out. " + error.localizedDescription());
    userTitleRules_ = rules ? std::move(*rules) : TitleRules::hidingAll();
    applyTitleRules();
}

void Orvane::applyTitleRules() {
    if (!currentRecording_) return;
    platform_.runLoop().cancelPreviousPerformRequests(this, pollSelector);
    poll();
}

void Orvane::setIdleTime(double seconds) {
    const AnnouncedChange change(*this, "idleTime");
    idleTime_ = seconds;
}

void Orvane::setCurrentRecording(Ref<OrvaneRecording> recording) {
    const AnnouncedChange change(*this, "currentRecording");
    currentRecording_ = std::move(recording);
}

bool Orvane::isLogging() const { return platform_.userDefaults().boolForKey(orvaneLoggingDefault); }

void Orvane::log(const std::string& line) const { platform_.logSink().log(line); }

std::string Orvane::hexStringForColor(const std::optional<Color>& color) const {
    return orvane::hexStringForColor(color);
}

}  // namespace orvane
