#include "host/replay/replay_session.h"

#include <array>
#include <fstream>

#include "host/replay/local_time_zone.h"

namespace orvane::host {

namespace {

constexpr const char* databaseFileName = "Orvaning.db";
// What tells that a notice belongs to the workspace.
constexpr std::string_view workspacePrefix = "NSWorkspace";
// Wall-clock times, in microseconds, stay this far from the ends of their type.
constexpr std::int64_t latestWallTime = 4'000'000'000'000'000'000;

/// A sender that is not the host application.
const int otherSender = 0;

/// A number that differs from one run over a database to the next: the count of changes that SQLite keeps in
/// bytes 24 to 27 of the file (SQLite file format, "File change counter"). 0 while there is no database.
std::uint64_t numberOfStoredState(const std::filesystem::path& database) {
    std::array<unsigned char, 28> head{};
    std::ifstream file(database, std::ios::binary);
    if (!file.read(reinterpret_cast<char*>(head.data()), head.size())) return 0;
    std::uint64_t counter = 1;  // so that no database and one never changed differ
    for (std::size_t i = 24; i < 28; ++i) counter = counter << 8 | head[i];
    return counter;
}

}  // namespace

ReplaySession::ReplaySession(const TraceHeader& header, std::ostream& output,
                             std::filesystem::path supportFolder, const std::filesystem::path& resourceFolder)
    : platform_(std::make_shared<SimulatedPlatform>()),
      supportFolder_(std::move(supportFolder)),
      start_(header.start),
      output_(output, platform_->clock(), header.epoch),
      timeZone_(header.timezone) {
    platform_->clock().setWallTime(header.epoch);
    platform_->fileManager().setApplicationSupportDirectory(supportFolder_);
    platform_->fileManager().setResourceDirectory(resourceFolder);
    platform_->logSink().setHandler([this](std::string_view line) { output_.log(line); });
    platform_->hostApplication().setErrorHandler([this](const Error& error) { output_.error(error); });
    platform_->valueTransformers().setValueTransformer(shortDate, "VxShortDateTransformer");
    platform_->valueTransformers().setValueTransformer(shortTime, "VxShortTimeTransformer");
    for (const auto& [key, value] : header.defaults) platform_->userDefaults().setObject(value, key);

    Orvane::resetShared();
    Platform::install(platform_);
    seedIdentifiers();
}

ReplaySession::~ReplaySession() {
    Orvane::resetShared();
    Platform::install(nullptr);
    platform_->logSink().setHandler(nullptr);
}

void ReplaySession::begin() {
    if (start_) tracker();
}

Orvane& ReplaySession::tracker() {
    hasTracker_ = true;
    return Orvane::sharedOrvane();
}

void ReplaySession::seedIdentifiers() {
    std::filesystem::path folder = supportFolder_ / "Orvane";
    if (hasTracker_ && tracker().url()) folder = *tracker().url();
    platform_->uuidSource().setSeed(numberOfStoredState(folder / databaseFileName));
}

std::optional<std::string> ReplaySession::run(const TraceLine& line) {
    platform_->runLoop().advanceTo(line.at);
    return std::visit([this](const auto& action) { return apply(action); }, line.action);
}

ReplaySession::Problem ReplaySession::apply(const DesktopAction& action) {
    if (action.frontmost) platform_->workspace().setFrontmostApplication(*action.frontmost);
    if (action.windows) platform_->windowServer().setWindows(*action.windows);
    if (action.accessibility) {
        platform_->accessibility().setProcessTrusted(action.accessibility->trusted);
        platform_->accessibility().setFocusedWindows(action.accessibility->focusedWindows);
    }
    if (action.applications) platform_->workspace().setApplications(*action.applications);
    return std::nullopt;
}

ReplaySession::Problem ReplaySession::apply(const InputAction&) {
    platform_->windowServer().noteInput();
    return std::nullopt;
}

ReplaySession::Problem ReplaySession::apply(const IdleAction& action) {
    platform_->windowServer().setTimeSinceLastInput(action.sinceLastInput);
    return std::nullopt;
}

ReplaySession::Problem ReplaySession::apply(const NotifyAction& action) {
    const bool ofWorkspace = action.name.starts_with(workspacePrefix);
    NotificationCenter& center =
        ofWorkspace ? platform_->workspace().notificationCenter() : platform_->defaultNotificationCenter();
    const HostApplication* host = &platform_->hostApplication();
    center.post(action.name, action.fromHost ? static_cast<const void*>(host) : &otherSender,
                action.userInfo);
    return std::nullopt;
}

ReplaySession::Problem ReplaySession::apply(const DefaultsAction& action) {
    for (const auto& [key, value] : action.values) platform_->userDefaults().setObject(value, key);
    return std::nullopt;
}

ReplaySession::Problem ReplaySession::apply(const TrackerAction& action) {
    for (const auto& [key, value] : action.values) {
        if (key == "url") {
            const std::string* path = value.asString();
            tracker().setUrl(path ? std::optional<std::filesystem::path>(*path) : std::nullopt);
            // Afterwards the folder is of no consequence any more, and some numbers may have been used.
            if (!tracker().existingManagedObjectContext()) seedIdentifiers();
        } else if (key == "idleThreshold") {
            tracker().setIdleThreshold(value.isNone() ? std::nullopt : std::optional(value.doubleValue()));
        } else {
            tracker().setEnabled(value);
        }
    }
    return std::nullopt;
}

ReplaySession::Problem ReplaySession::apply(CallAction action) {
    switch (action) {
        case CallAction::sharedOrvane:
            tracker();
            break;
        case CallAction::start:
            tracker().start();
            break;
        case CallAction::stop:
            tracker().stop();
            break;
        case CallAction::poll:
            tracker().poll();
            break;
    }
    return std::nullopt;
}

ReplaySession::Problem ReplaySession::apply(const ClockStepAction& action) {
    const std::int64_t stepped = (platform_->clock().wallTime() + action.step).count();
    if (stepped > latestWallTime || stepped < -latestWallTime) return "clockStep leads out of time";
    platform_->clock().stepWallTime(action.step);
    return std::nullopt;
}

ReplaySession::Problem ReplaySession::apply(const StorageAction& action) {
    FailingFileSystem& files = platform_->fileManager().failingFileSystem();
    if (action.open) files.setOpenFails(!*action.open);
    if (action.reads) files.setReadsFail(!*action.reads);
    if (action.writes) files.setWritesFail(!*action.writes);
    return std::nullopt;
}

ReplaySession::Problem ReplaySession::apply(CurrentAction action) {
    // Only what is there already: asking the tracker for its context could build one.
    ManagedObjectContext* context = tracker().existingManagedObjectContext();
    if (!context) return std::nullopt;
    const Ref<OrvaneRecording> current = tracker().currentRecording();
    switch (action) {
        case CurrentAction::refresh:
            if (current && current->isUsable()) context->refreshObject(*current, false);
            break;
        case CurrentAction::remove:
            if (!current) break;
            if (current->isUsable()) context->deleteObject(*current);
            context->save();
            break;
        case CurrentAction::reset:
            context->reset();
            break;
    }
    return std::nullopt;
}

}  // namespace orvane::host
