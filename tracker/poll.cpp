#include <limits>

#include "store/orvane_app.h"
#include "tracker/orvane.h"
#include "tracker/postponed_samples.h"
#include "util/color_text.h"
#include "util/day_boundaries.h"
#include "util/dominant_color.h"

namespace orvane {

namespace {

/// Seconds without input beyond which the user is idle: whole minutes only.
double idleLimit(double thresholdMinutes) {
    std::int64_t seconds = 0;
    const std::int64_t minutes = Value(thresholdMinutes).integerValue();
    if (__builtin_mul_overflow(minutes, std::int64_t{60}, &seconds))
        seconds =
            minutes < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
    return static_cast<double>(seconds);
}

/// Equality of two texts; an absent one equals nothing.
bool sameText(const Value& left, const Value& right) {
    return !left.isNone() && !right.isNone() && left == right;
}

}  // namespace

void Orvane::poll() {
    // The idle time is kept up to date even while nothing is recorded.
    setIdleTime(platform_.windowServer().secondsSinceLastEventType(kCGEventSourceStateCombinedSessionState,
                                                                   kCGAnyInputEventType));

    // Whoever stops here asks for no further poll: the chain ends.
    if (!enabled_.boolValue()) return;
    if (!storeStack_.followFile()) return;
    ManagedObjectContext* context = managedObjectContext();
    if (!context) return;

    // A recording that was deleted, refreshed or reset elsewhere is forgotten, not closed.
    if (currentRecording_ && currentRecording_->isFault()) setCurrentRecording(nullptr);

    UndoManager* undoManager = context->undoManager();
    if (undoManager) undoManager->disableUndoRegistration();

    Sample sample{.kind = Sample::Kind::noWindow};
    if (const std::optional<Dictionary> window = currentWindow()) {
        const Value identifier = (*window)[kCGWindowOwnerBundleIdentifier];
        if (identifier.isNone()) {
            // Nobody knows whose window this is: the sample is passed over, and undo registration stays
            // suspended.
            schedulePoll();
            return;
        }
        sample = {.kind = Sample::Kind::window,
                  .identifier = *identifier.asString(),
                  .ownerName = (*window)[kCGWindowOwnerName],
                  .windowName = (*window)[kCGWindowName],
                  .idle = idleTime_ > idleLimit(idleThreshold())};
    }

    std::optional<WriteScope> scope;
    if (sample.kind == Sample::Kind::window || !postponed_->isEmpty()) scope.emplace(*context);
    if (scope && scope->isLockedOut()) {
        sample.second = orvaneSecondStart(platform_.clock().now());
        postponed_->add(std::move(sample), currentRecording_);
    } else {
        recordPostponed(*context);
        record(*context, sample);
    }
    // What cannot be saved stays in the context, and the next poll tries again.
    context->save();
    if (undoManager) undoManager->enableUndoRegistration();
    // A recording that another program deleted is found gone by the save; what goes on is recorded anew.
    schedulePoll(currentRecording_ && currentRecording_->isFault() ? 0 : pollInterval);
}

/// Now, for a sample that did not have to wait.
Date Orvane::second(const Sample& sample) const {
    return sample.second ? *sample.second : orvaneSecondStart(platform_.clock().now());
}

void Orvane::record(ManagedObjectContext& context, const Sample& sample) {
    if (sample.kind == Sample::Kind::window) {
        Value previousName = "";
        Value previousIdentifier = "";
        bool previousIdle = false;
        if (currentRecording_) {
            previousName = currentRecording_->windowName();
            previousIdentifier = currentRecording_->valueForKeyPath("application.identifier");
            previousIdle = currentRecording_->idleValue();
        }
        const Ref<OrvaneApp> application = applicationForSample(context, sample);
        const bool continues = sameText(sample.windowName, previousName) && previousIdle == sample.idle &&
                               sameText(sample.identifier, previousIdentifier);
        if (!continues) switchTo(context, application, sample);
    }
    if (!currentRecording_) return;
    currentRecording_->setEndDate(second(sample));
    if (sample.kind == Sample::Kind::end) {
        setCurrentRecording(nullptr);
    } else if (const Ref<OrvaneApp> application = currentRecording_->application()) {
        application->willChangeValueForKey("lastUsedDate");
        application->didChangeValueForKey("lastUsedDate");
    }
}

void Orvane::recordPostponed(ManagedObjectContext& context) {
    if (postponed_->isEmpty()) return;
    UndoManager* undoManager = context.undoManager();
    if (undoManager) undoManager->disableUndoRegistration();
    const auto [current, samples] = postponed_->take();
    setCurrentRecording(current && !current->isFault() ? current : nullptr);
    for (const Sample& sample : samples) record(context, sample);
    if (undoManager) undoManager->enableUndoRegistration();
}

Ref<OrvaneApp> Orvane::applicationForSample(ManagedObjectContext& context, const Sample& sample) const {
    const auto known =
        context.fetch<OrvaneApp>({std::string(OrvaneApp::entityName()),
                                  Predicate::withFormat("identifier == %@", {Value(sample.identifier)})});
    if (!known.empty()) return known.front();

    Ref<OrvaneApp> application = OrvaneApp::insertInManagedObjectContext(context);
    application->setIdentifier(sample.identifier);
    if (const std::string* name = sample.ownerName.asString()) application->setName(*name);
    Workspace& workspace = platform_.workspace();
    const auto location = workspace.URLForApplicationWithBundleIdentifier(sample.identifier);
    application->setColor(
        hexStringForColor(location ? dominantColor(workspace.iconForFile(*location)) : std::nullopt));
    return application;
}

void Orvane::switchTo(ManagedObjectContext& context, const Ref<OrvaneApp>& application,
                      const Sample& sample) {
    if (currentRecording_) {
        currentRecording_->setEndDate(second(sample));
        if (isLogging()) log("Orvane stopped " + currentRecording_->debugInfo().description());
    }
    if (application->disabledValue()) {
        setCurrentRecording(nullptr);
        return;
    }
    const Ref<OrvaneRecording> recording = OrvaneRecording::insertInManagedObjectContext(context);
    setCurrentRecording(recording);
    recording->setStartDate(second(sample));
    recording->setApplication(application);
    if (const std::string* name = sample.windowName.asString()) recording->setWindowName(*name);
    recording->setIdle(sample.idle);
    if (isLogging()) log("Orvane started " + recording->debugInfo().description());
}

}  // namespace orvane
