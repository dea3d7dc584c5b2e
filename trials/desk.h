#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/error.h"
#include "platform/simulated/simulated_platform.h"
#include "tracker/orvane.h"

namespace orvane::trials {

/// A simulated desktop at 2026-03-02T08:00:00Z and a tracker on it, which is switched off at first. The
/// desktop made or used last is the process's platform.
class Desk {
  public:
    /// The store lies in `folder`; `fileSystem` names the SQLite file system, empty for the usual one.
    Desk(const std::filesystem::path& folder, std::string fileSystem);
    ~Desk();
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    /// Makes this desktop the process's platform again.
    void use() { Platform::install(platform_); }

    Orvane& tracker() { return *tracker_; }
    SimulatedPlatform& platform() { return *platform_; }
    /// None when the store cannot be opened.
    OrvaneManagedObjectContext* context() { return tracker_->managedObjectContext(); }
    /// What the host was asked to show so far.
    const std::vector<Error>& errors() const { return errors_; }

    /// Brings a window to the front; tells nobody.
    void show(const std::string& application, const std::string& window);
    /// The notice that comes with another application in front.
    void activate();
    void sleep();
    /// Lets time pass, with every poll that falls due.
    void pass(double seconds);

  private:
    std::shared_ptr<SimulatedPlatform> platform_;
    std::vector<Error> errors_;
    Ref<Orvane> tracker_;
};

}  // namespace orvane::trials
