#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/keyed_object.h"
#include "platform/platform.h"
#include "store/orvane_recording.h"
#include "store/store_stack.h"
#include "tracker/title_rules.h"

namespace orvane {

class PostponedSamples;
class RangeItem;
struct Sample;

// User defaults that the tracker reads.
inline constexpr const char* orvaneEnabledDefault =
    "OrvaneEnabled";  ///< absent, false or true: see `enabled`
inline constexpr const char* orvaneLoggingDefault = "OrvaneLogging";  ///< true: diagnostic lines are logged
inline constexpr const char* orvaneTitleRulesDefault =
    "OrvaneTitleRules";  ///< the user's rules about window titles: see `TitleRules::read`

/// The tracker: every 10 seconds, and at every application switch, it samples the front window and keeps a
/// recording of it in the store. There is one in a process. Everything here is for the host's main thread,
/// but for `sharedOrvane` itself and for `itemsFromDate` in another context.
class ORVANE_EXPORT Orvane : public KeyedObject {
  public:
    static const KeyTable& classKeyTable();

    /// The process's tracker, made on the first call, which may come from any thread. It then follows the
    /// user defaults "OrvaneEnabled" and "OrvaneTitleRules", the workspace's activation and sleep notices and
    /// the host application's end.
    static Orvane& sharedOrvane();
    /// The same, with the store in the folder `url` when this is the call that makes the tracker.
    static Orvane& sharedOrvane(const std::optional<std::filesystem::path>& url);
    /// Ends the tracker that `sharedOrvane` made; the next call makes another. For hosts that test.
    static void resetShared();

    Orvane();
    ~Orvane() override;
    const KeyTable& keyTable() const override { return classKeyTable(); }

    // Lifecycle and events

    /// Samples at once, and from then on every 10 seconds. Polls that are pending already go on beside it.
    void start(const void* sender = nullptr);
    /// Cancels everything that is pending.
    void stop(const void* sender = nullptr);
    void appActivated(const Notification& notification);
    void willSleep(const Notification& notification);
    void willTerminate(const Notification& notification);

    /// One sample: extends the current recording, or closes it and opens another, saves, and asks for the
    /// next. While another program holds the store's lock the samples wait in memory. A store that was
    /// deleted, moved or replaced since the last poll is shown as an error, and recording begins afresh in
    /// the file in its place.
    void poll();

    // The desktop as the tracker sees it

    std::optional<RunningApplication> frontmostApplication() const;
    /// Description of the frontmost application's front window, with the application's identifier and, where
    /// only accessibility tells it, the title, which is what the rules below leave of it. None when the
    /// application shows no normal window.
    std::optional<Dictionary> currentWindow() const;

    // Settings and state

    /// A boolean number, or none while nobody has decided. Setting a value runs a poll at once, which stops
    /// at its gate when the value is false; setting none cancels the pending polls.
    const Value& enabled() const { return enabled_; }
    void setEnabled(const Value& enabled);
    /// Minutes without input after which the user counts as idle; only whole ones count. 2 when none is
    /// stored.
    double idleThreshold() const { return idleThreshold_.value_or(defaultIdleThreshold); }
    void setIdleThreshold(std::optional<double> minutes);
    /// The host's rules about window titles; the user's come after them. What they hide reaches neither the
    /// store nor the log. User rules that cannot be read hide every title, and the log tells why. New rules
    /// apply at once: a span that is being recorded ends, when its title is to be hidden. What was recorded
    /// before stays.
    const TitleRules& titleRules() const { return hostTitleRules_; }
    void setTitleRules(TitleRules rules);
    /// Seconds since the user's last input as of the last poll.
    double idleTime() const { return idleTime_; }
    void setIdleTime(double seconds);
    /// The span being recorded, or none.
    const Ref<OrvaneRecording>& currentRecording() const { return currentRecording_; }
    void setCurrentRecording(Ref<OrvaneRecording> recording);
    /// Folder that holds the database instead of the user's application-support folder. Read when the store
    /// is opened.
    const std::optional<std::filesystem::path>& url() const { return storeStack_.url(); }
    void setUrl(std::optional<std::filesystem::path> url) { storeStack_.setUrl(std::move(url)); }

    // Store: each piece is built on first use and kept; none, after showing the errors, when it cannot be
    // built

    std::shared_ptr<const ManagedObjectModel> managedObjectModel() {
        return storeStack_.managedObjectModel();
    }
    std::filesystem::path applicationFilesDirectory() { return storeStack_.applicationFilesDirectory(); }
    std::shared_ptr<PersistentStoreCoordinator> persistentStoreCoordinator() {
        return storeStack_.persistentStoreCoordinator();
    }
    OrvaneManagedObjectContext* managedObjectContext() { return storeStack_.managedObjectContext(); }
    /// The main context if it was built already; builds nothing.
    OrvaneManagedObjectContext* existingManagedObjectContext() const {
        return storeStack_.existingManagedObjectContext();
    }

    // Reporting

    /// Where the time between two dates (both inclusive) went: every group, with those of its applications
    /// that were used, and the used applications without a group; longest first. Empty when the store cannot
    /// be read.
    std::vector<Ref<RangeItem>> itemsFromDate(Date fromDate, Date toDate);
    /// The same through any context of the store, on that context's thread.
    std::vector<Ref<RangeItem>> itemsFromDate(Date fromDate, Date toDate,
                                              ManagedObjectContext& context) const;

    /// A colour as it is stored: see `orvane::hexStringForColor`.
    std::string hexStringForColor(const std::optional<Color>& color) const;

  private:
    static constexpr double defaultIdleThreshold = 2;  // minutes
    static constexpr double pollInterval = 10;         // seconds

    void followDefaults();
    void takeUserTitleRules(const Value& value);
    /// Samples a span anew that is being recorded.
    void applyTitleRules();
    void endRecording(const char* logLine);
    void schedulePoll(double delay = pollInterval);
    bool isLogging() const;
    void log(const std::string& line) const;
    Date second(const Sample& sample) const;
    void record(ManagedObjectContext& context, const Sample& sample);
    void recordPostponed(ManagedObjectContext& context);
    Ref<OrvaneApp> applicationForSample(ManagedObjectContext& context, const Sample& sample) const;
    void switchTo(ManagedObjectContext& context, const Ref<OrvaneApp>& application, const Sample& sample);

    StoreStack storeStack_;
    Ref<OrvaneRecording> currentRecording_;
    std::unique_ptr<PostponedSamples> postponed_;
    double idleTime_ = 0;
    Value enabled_;
    std::optional<double> idleThreshold_;
    TitleRules hostTitleRules_;
    TitleRules userTitleRules_;
    std::shared_ptr<void> titleRulesBinding_;
    std::shared_ptr<void> enabledBinding_;
    Platform& platform_;
};

}  // namespace orvane
