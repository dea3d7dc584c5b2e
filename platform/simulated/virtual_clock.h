#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "platform/clock.h"

namespace orvane {

/// A clock that stands still until it is moved. It counts whole microseconds: a monotonic time that starts at
/// 0, and a wall clock that runs with it and can be set apart from it. Any thread.
class ORVANE_EXPORT VirtualClock : public Clock {
  public:
    using Time = std::chrono::microseconds;

    /// Wall-clock time, which is what the library sees.
    Date now() override;

    /// Monotonic time since the start.
    Time time() const { return Time(time_.load()); }
    /// Wall-clock time since the Unix epoch.
    Time wallTime() const { return Time(time_.load() + offset_.load()); }

    /// Moves the monotonic time, and the wall clock with it. It never goes back: an earlier time changes
    /// nothing.
    void moveTo(Time time);
    /// Sets what the wall clock shows now.
    void setWallTime(Time sinceUnixEpoch) { offset_ = sinceUnixEpoch.count() - time_.load(); }
    /// Sets the wall clock forward, or back when negative; the monotonic time stays.
    void stepWallTime(Time step) { offset_ += step.count(); }

  private:
    std::atomic<std::int64_t> time_ = 0;
    std::atomic<std::int64_t> offset_ = 0;
};

}  // namespace orvane
