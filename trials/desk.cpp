#include "trials/desk.h"

namespace orvane::trials {

namespace {

using Time = VirtualClock::Time;

constexpr Time start{1'772'438'400'000'000};  // 2026-03-02T08:00:00Z in microseconds
constexpr std::int32_t processIdentifier = 100;

}  // namespace

Desk::Desk(const std::filesystem::path& folder, std::string fileSystem)
    : platform_(std::make_shared<SimulatedPlatform>()) {
    platform_->clock().setWallTime(start);
    platform_->fileManager().setDatabaseFileSystem(std::move(fileSystem));
    platform_->hostApplication().setErrorHandler([this](const Error& error) { errors_.push_back(error); });
    use();
    tracker_ = makeRef<Orvane>();
    tracker_->setUrl(folder);
}

Desk::~Desk() {
    use();
    tracker_ = nullptr;
    Platform::install(nullptr);
}

void Desk::show(const std::string& application, const std::string& window) {
    Dictionary description;
    description.set(kCGWindowOwnerPID, processIdentifier);
    description.set(kCGWindowLayer, 0);
    description.set(kCGWindowOwnerName, application);
    description.set(kCGWindowName, window);
    platform_->workspace().setFrontmostApplication(RunningApplication{application, processIdentifier});
    platform_->windowServer().setWindows({std::move(description)});
}

void Desk::activate() {
    platform_->workspace().notificationCenter().post(NSWorkspaceDidActivateApplicationNotification);
}

void Desk::sleep() { platform_->workspace().notificationCenter().post(NSWorkspaceWillSleepNotification); }

void Desk::pass(double seconds) {
    platform_->runLoop().advanceTo(platform_->clock().time() +
                                   Time(static_cast<std::int64_t>(seconds * 1'000'000)));
}

}  // namespace orvane::trials
