#include "host/reading_platform.h"

#include <iostream>

#include "host/answer.h"
#include "platform/linux/error_presenter.h"

namespace orvane::host {

namespace {

class EmptyDefaults : public UserDefaults {
  public:
    Value objectForKey(std::string_view) override { return {}; }
    bool setObject(const Value&, std::string_view, Error*) override { return true; }
    std::shared_ptr<void> bind(std::string_view, Handler handler) override {
        handler(Value());
        return nullptr;
    }
};

class QuietLog : public LogSink {
  public:
    void log(std::string_view) override {}
};

class ReadingPlatform : public Platform {
  public:
    explicit ReadingPlatform(std::shared_ptr<Platform> desktop) : desktop_(std::move(desktop)) {}

    Workspace& workspace() override { return workspace_; }
    WindowServer& windowServer() override { return desktop_->windowServer(); }
    Accessibility& accessibility() override { return desktop_->accessibility(); }
    HostApplication& hostApplication() override { return desktop_->hostApplication(); }
    FileManager& fileManager() override { return desktop_->fileManager(); }
    UserDefaults& userDefaults() override { return defaults_; }
    RunLoop& runLoop() override { return desktop_->runLoop(); }
    Clock& clock() override { return desktop_->clock(); }
    LogSink& logSink() override { return log_; }
    UuidSource& uuidSource() override { return desktop_->uuidSource(); }
    std::vector<ServiceHealth> desktopHealth() override { return desktop_->desktopHealth(); }

  private:
    /// Answers from the desktop, but brings it up only when something is asked of it: registering for its
    /// notices, as every tracker does, needs no display.
    class LateWorkspace : public Workspace {
      public:
        explicit LateWorkspace(ReadingPlatform& platform) : platform_(platform) {}

        std::optional<RunningApplication> frontmostApplication() override {
            return platform_.desktop_->workspace().frontmostApplication();
        }
        std::optional<std::filesystem::path> URLForApplicationWithBundleIdentifier(
            std::string_view identifier) override {
            return platform_.desktop_->workspace().URLForApplicationWithBundleIdentifier(identifier);
        }
        std::optional<std::string> absolutePathForAppBundleWithIdentifier(
            std::string_view identifier) override {
            return platform_.desktop_->workspace().absolutePathForAppBundleWithIdentifier(identifier);
        }
        Image iconForFile(const std::filesystem::path& path) override {
            return platform_.desktop_->workspace().iconForFile(path);
        }
        NotificationCenter& notificationCenter() override { return notifications_; }

      private:
        ReadingPlatform& platform_;
        NotificationCenter notifications_;
    };

    std::shared_ptr<Platform> desktop_;
    EmptyDefaults defaults_;
    QuietLog log_;
    LateWorkspace workspace_{*this};
};

Orvane& trackerForReading(const std::optional<std::filesystem::path>& folder) {
    setErrorPresenter(
        [](const Error& error) { std::cerr << "orvane: " << error.localizedDescription() << '\n'; });
    Platform::install(makeReadingPlatform());
    return Orvane::sharedOrvane(folder);
}

}  // namespace

std::shared_ptr<Platform> makeReadingPlatform() {
    return std::make_shared<ReadingPlatform>(makeLinuxPlatform());
}

OpenStore::OpenStore(const std::optional<std::filesystem::path>& folder)
    : tracker_(trackerForReading(folder)),
      exists_(Platform::current().fileManager().fileExists(
          folder.value_or(tracker_.applicationFilesDirectory()) / "Orvaning.db")) {}

OpenStore::~OpenStore() {
    Orvane::resetShared();
    Platform::install(nullptr);
}

int OpenStore::readStatus() const {
    const ManagedObjectContext* context = tracker_.existingManagedObjectContext();
    return context && context->lastReadError() ? fail(context->lastReadError()) : exitSuccess;
}

ManagedObjectContext* OpenStore::context() { return exists_ ? tracker_.managedObjectContext() : nullptr; }

}  // namespace orvane::host
