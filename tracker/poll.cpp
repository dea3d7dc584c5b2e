#include <limits>

#include "store/orvane_app.h"
#include "tracker/orvane.h"
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
    ManagedObjectContext* context = managedObjectContext();
    if (!context) return;

    // A recording that was deleted, refreshed or reset elsewhere is forgotten, not closed.
    if (currentRecording_ && currentRecording_->isFault()) setCurrentRecording(nullptr);

    UndoManager* undoManager = context->undoManager();
    if (undoManager) undoManager->disableUndoRegistration();

    bool continues = false;
    std::optional<WriteScope> scope;
    if (const std::optional<Dictionary> window = currentWindow()) {
        const Value identifier = (*window)[kCGWindowOwnerBundleIdentifier];
        const Value windowName = (*window)[kCGWindowName];
        if (identifier.isNone()) {
            // Nobody knows whose window this is: the sample is passed over, and undo registration stays
            // suspended.
            schedulePoll();
            return;
        }

        const bool idle = idleTime_ > idleLimit(idleThreshold());

        Value previousName = "";
        Value previousIdentifier = "";
        bool previousIdle = false;
        if (currentRecording_) {
            previousName = currentRecording_->windowName();
            previousIdentifier = currentRecording_->valueForKeyPath("application.identifier");
            previousIdle = currentRecording_->idleValue();
        }

        scope.emplace(*context);
        const Ref<OrvaneApp> application =
            applicationForSample(*context, *identifier.asString(), (*window)[kCGWindowOwnerName]);

        continues = sameText(windowName, previousName) && previousIdle == idle &&
                    sameText(identifier, previousIdentifier);
        if (!continues) switchTo(*context, application, windowName, idle);
    }

    if (currentRecording_) {
        currentRecording_->setEndDate(orvaneSecondStart(platform_.clock().now()));
        if (const Ref<OrvaneApp> application = currentRecording_->application()) {
            application->willChangeValueForKey("lastUsedDate");
            application->didChangeValueForKey("lastUsedDate");
        }
    }
    // What cannot be saved stays in the context, and the next poll tries again.
    context->save();
    if (undoManager) undoManager->enableUndoRegistration();
    // A recording that another program deleted is found gone by the save; what goes on is recorded anew.
    const bool isGone = continues && currentRecording_ && currentRecording_->isFault();
    schedulePoll(isGone ? 0 : pollInterval);
}

Ref<OrvaneApp> Orvane::applicationForSample(ManagedObjectContext& context, const std::string& identifier,
                                            const Value& ownerName) const {
    const auto known =
        context.fetch<OrvaneApp>({std::string(OrvaneApp::entityName()),
                                  Predicate::withFormat("identifier == %@", {Value(identifier)})});
    if (!known.empty()) return known.front();

    Ref<OrvaneApp> application = OrvaneApp::insertInManagedObjectContext(context);
    application->setIdentifier(identifier);
    if (const std::string* name = ownerName.asString()) application->setName(*name);
    Workspace& workspace = platform_.workspace();
    const auto location = workspace.URLForApplicationWithBundleIdentifier(identifier);
    application->setColor(
        hexStringForColor(location ? dominantColor(workspace.iconForFile(*location)) : std::nullopt));
    return application;
}

void Orvane::switchTo(ManagedObjectContext& context, const Ref<OrvaneApp>& application,
                      const Value& windowName, bool idle) {
    if (currentRecording_) {
        currentRecording_->setEndDate(orvaneSecondStart(platform_.clock().now()));
        if (isLogging()) log("Orvane stopped " + currentRecording_->debugInfo().description());
    }
    if (application->disabledValue()) {
        setCurrentRecording(nullptr);
        return;
    }
    const Ref<OrvaneRecording> recording = OrvaneRecording::insertInManagedObjectContext(context);
    setCurrentRecording(recording);
    recording->setStartDate(orvaneSecondStart(platform_.clock().now()));
    recording->setApplication(application);
    if (const std::string* name = windowName.asString()) recording->setWindowName(*name);
    recording->setIdle(idle);
    if (isLogging()) log("Orvane started " + recording->debugInfo().description());
}

}  // namespace orvane
