#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/simulated/simulated_platform.h"
#include "tests/persistence/temporary_folder.h"
#include "tracker/orvane.h"

namespace orvane::test {

/// A simulated desktop with one window in front, and the shared tracker, which is switched on and logs.
class TrackedDesk {
  public:
    TrackedDesk();
    ~TrackedDesk();
    TrackedDesk(const TrackedDesk&) = delete;
    TrackedDesk& operator=(const TrackedDesk&) = delete;

    SimulatedPlatform& desktop() { return *desktop_; }
    const std::filesystem::path& folder() const { return folder_.path(); }
    /// Puts a window in front, which the next poll finds.
    void show(const std::string& application, const std::string& title);
    void pass(int seconds);
    Orvane& tracker() { return Orvane::sharedOrvane(folder_.path()); }
    /// "APPLICATION TITLE SECONDS" of each recording as the file holds it, in their order.
    std::string recordings() const;
    /// Everything that was logged.
    const std::string& log() const { return log_; }

  private:
    TemporaryFolder folder_;
    std::shared_ptr<SimulatedPlatform> desktop_ = std::make_shared<SimulatedPlatform>();
    std::string log_;
};

}  // namespace orvane::test
