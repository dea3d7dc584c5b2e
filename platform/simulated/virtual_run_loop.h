#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "platform/run_loop.h"
#include "platform/simulated/virtual_clock.h"

namespace orvane {

/// A run loop on a virtual clock. Requests run only inside `advanceTo`.
class ORVANE_EXPORT VirtualRunLoop : public RunLoop {
  public:
    using Time = VirtualClock::Time;

    /// The clock must outlive the loop.
    explicit VirtualRunLoop(VirtualClock& clock) : clock_(clock) {}

    /// A delay is taken to the nearest microsecond; a negative one, or none at all (NaN), counts as zero.
    void performSelector(const void* target, std::string_view selector, double delay,
                         std::function<void()> action) override;
    void cancelPreviousPerformRequests(const void* target) override;
    void cancelPreviousPerformRequests(const void* target, std::string_view selector) override;
    std::size_t pendingRequestCount(const void* target) const override;
    /// Number of all pending requests.
    std::size_t pendingRequestCount() const { return requests_.size(); }

    /// Runs every request that is due at or before `time`, in order of due time and then of being made, also
    /// those made meanwhile. The clock stands at the due time of the request that runs (or where it stood,
    /// for one that is overdue), and at `time` afterwards.
    void advanceTo(Time time);
    /// Moves the clock and runs nothing: as if the loop had been busy until then.
    void moveTimeOnly(Time time) { clock_.moveTo(time); }

  private:
    struct Request {
        const void* target;
        std::string selector;
        std::function<void()> action;
    };
    // Due time in microseconds, then a running number.
    using Order = std::pair<std::int64_t, std::uint64_t>;

    VirtualClock& clock_;
    std::map<Order, Request> requests_;
    std::uint64_t made_ = 0;
};

}  // namespace orvane
