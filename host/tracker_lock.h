#pragma once

#include <filesystem>
#include <string>

namespace orvane::host {

/// Keeps a second tracker off the same store for as long as it lives, however this process ends.
class TrackerLock {
  public:
    /// Takes the lock in the folder, which is made when it is missing.
    explicit TrackerLock(const std::filesystem::path& folder);
    ~TrackerLock();
    TrackerLock(const TrackerLock&) = delete;
    TrackerLock& operator=(const TrackerLock&) = delete;

    bool isHeld() const { return descriptor_ >= 0; }
    /// Why the lock is not held.
    const std::string& problem() const { return problem_; }

  private:
    int descriptor_ = -1;
    std::string problem_;
};

}  // namespace orvane::host
