#include <glib-unix.h>

#include <algorithm>
#include <csignal>
#include <iostream>
#include <nlohmann/json.hpp>

#include "foundation/observing.h"
#include "host/command.h"
#include "host/terminal.h"
#include "host/tracker_lock.h"
#include "platform/linux/desktop_choice.h"
#include "platform/linux/error_presenter.h"
#include "platform/linux/linux_platform.h"
#include "store/orvane_app.h"
#include "tracker/orvane.h"
#include "util/day_boundaries.h"

namespace orvane::host {

namespace {

/// Runs the tracker on the main loop until the process is asked to end, and shows what it records.
class TrackSession {
  public:
    TrackSession(Orvane& tracker, bool json)
        : tracker_(tracker),
          json_(json),
          shows_(json || isTerminal()),
          loop_(g_main_loop_new(nullptr, FALSE)) {}
    ~TrackSession() {
        if (pendingShow_ != 0) g_source_remove(pendingShow_);
        g_main_loop_unref(loop_);
    }
    TrackSession(const TrackSession&) = delete;
    TrackSession& operator=(const TrackSession&) = delete;

    void run() {
        const auto ended = +[](gpointer session) -> gboolean {
            static_cast<TrackSession*>(session)->end();
            return G_SOURCE_CONTINUE;
        };
        const guint signals[] = {g_unix_signal_add(SIGINT, ended, this),
                                 g_unix_signal_add(SIGTERM, ended, this),
                                 g_unix_signal_add(SIGHUP, ended, this)};
        // Shutdown and logout are told as the host's end by the platform itself.
        Platform& platform = Platform::current();
        platform.defaultNotificationCenter().addObserver(
            this, [this](const Notification&) { g_main_loop_quit(loop_); },
            NSApplicationWillTerminateNotification);
        const ObservationToken polls = observe(tracker_, "idleTime", [this](const Change&) {
            readApplicationAnew();
            if (shows_) showSoon();
        });
        if (shows_) showSoon();
        g_main_loop_run(loop_);
        for (const guint source : signals) g_source_remove(source);
        platform.defaultNotificationCenter().removeObserver(this);
        if (shows_ && !json_) std::cout << '\n';
    }

  private:
    void end() {
        Platform& platform = Platform::current();
        platform.defaultNotificationCenter().post(NSApplicationWillTerminateNotification,
                                                  &platform.hostApplication());
    }

    /// Another program may have switched the application off that is being recorded; a poll that has it in
    /// memory would not see that.
    void readApplicationAnew() const {
        const Ref<OrvaneRecording>& recording = tracker_.currentRecording();
        if (!recording || recording->isFault()) return;
        if (const Ref<OrvaneApp> app = recording->application())
            tracker_.managedObjectContext()->refreshObject(*app, true);
    }

    /// The idle time is the first thing a poll writes: what it records is shown when it is through.
    void showSoon() {
        if (pendingShow_ != 0) return;
        pendingShow_ = g_idle_add(
            +[](gpointer session) -> gboolean {
                auto* self = static_cast<TrackSession*>(session);
                self->pendingShow_ = 0;
                self->show();
                return G_SOURCE_REMOVE;
            },
            this);
    }

    DecimalSeconds recordedToday() const {
        DecimalSeconds sum{0};
        if (!tracker_.existingManagedObjectContext()) return sum;
        // No range report: that would fetch, and log, what is not needed here.
        const Date now = Platform::current().clock().now();
        for (const Ref<OrvaneRecording>& recording :
             tracker_.existingManagedObjectContext()->fetch<OrvaneRecording>(
                 {std::string(OrvaneRecording::entityName()),
                  Predicate::withFormat("startDate >= %@ AND startDate <= %@ AND idle == 0",
                                        {Value(orvaneDayStart(now)), Value(now)})}))
            sum += recording->duration();
        return sum;
    }

    void show() const {
        const Ref<OrvaneRecording> recording = tracker_.currentRecording();
        const Ref<OrvaneApp> app = recording ? recording->application() : nullptr;
        const std::string name(app ? app->name().value_or(app->identifier().value_or("")) : "");
        const std::string window(recording ? recording->windowName().value_or("") : "");
        const bool idle = recording && recording->idleValue();
        if (json_) {
            nlohmann::ordered_json json;
            json["enabled"] = tracker_.enabled().boolValue();
            json["application"] = app ? nlohmann::ordered_json(app->identifier().value_or("")) : nullptr;
            json["window"] = recording ? nlohmann::ordered_json(window) : nullptr;
            json["idle"] = idle;
            json["idleTime"] = tracker_.idleTime();
            json["recordedToday"] = decimalText(recordedToday());
            std::cout << json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << std::endl;
            return;
        }
        const bool isShown = tracker_.enabled().boolValue() && recording;
        std::string line = isShown                          ? name
                           : tracker_.enabled().boolValue() ? "Nothing is recorded at present"
                                                            : "Tracking is switched off";
        if (isShown && !window.empty()) line += " — " + window;
        line += (idle ? "  idle " : "  input ") + clockText(decimalSeconds(tracker_.idleTime())) + " ago";
        line += "  today " + clockText(recordedToday());
        std::string mark = swatch(isShown && app ? app->colorValue() : std::nullopt);
        const std::size_t markWidth = mark.empty() ? 0 : 3;
        if (!mark.empty()) mark += ' ';
        std::cout << "\r\033[K" << mark
                  << displayText(line, std::max(terminalWidth(), markWidth + 1) - markWidth) << std::flush;
    }

    Orvane& tracker_;
    const bool json_;
    const bool shows_;
    GMainLoop* loop_;
    guint pendingShow_ = 0;
};

}  // namespace

int runTrack(const CommonOptions& options) {
    setErrorPresenter([](const Error& error) {
        const std::string reason = error.localizedFailureReason();
        std::cerr << "orvane: " << error.localizedDescription() << (reason.empty() ? "" : " (" + reason + ")")
                  << '\n';
    });
    Platform& platform = Platform::current();
    const std::vector<std::filesystem::path> folders = platform.fileManager().applicationSupportDirectories();
    const std::filesystem::path folder =
        options.store.value_or(folders.empty() ? std::filesystem::path() : folders.back() / "Orvane");
    const TrackerLock lock(folder);
    if (!lock.isHeld()) {
        std::cerr << "orvane: " << lock.problem() << '\n';
        return exitFailure;
    }
    std::ostream& notes = std::cerr;
    if (platform.userDefaults().objectForKey(orvaneEnabledDefault).isNone()) {
        Error error;
        if (!platform.userDefaults().setObject(true, orvaneEnabledDefault, &error)) {
            notes << "orvane: " << error.localizedDescription() << '\n';
            return exitFailure;
        }
        notes << "Tracking was never switched on or off: it is on from now. `orvane disable` switches it "
                 "off.\n";
    } else if (!platform.userDefaults().boolForKey(orvaneEnabledDefault)) {
        notes << "Tracking is switched off. `orvane enable` switches it on; this waits for it.\n";
    }
    auto* linux = dynamic_cast<LinuxPlatform*>(&platform);
    if (linux != nullptr && linux->desktop().isDecided() && !linux->desktop().isAvailable())
        notes << "There is no display to track yet; this waits for it. `orvane doctor` tells more.\n";
    {
        Orvane& tracker = Orvane::sharedOrvane(options.store);
        TrackSession(tracker, options.json).run();
    }
    Orvane::resetShared();
    return exitSuccess;
}

}  // namespace orvane::host
