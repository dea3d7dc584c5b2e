#pragma once

#include <functional>
#include <string_view>

#include "foundation/export.h"

namespace orvane {

/// Delayed requests on the host's main loop. Main thread only.
class ORVANE_EXPORT RunLoop {
  public:
    virtual ~RunLoop() = default;

    /// Runs `action` once, `delay` seconds from now on the monotonic clock. Target and selector say what can
    /// be cancelled together; requests due at the same moment run in the order in which they were made.
    virtual void performSelector(const void* target, std::string_view selector, double delay,
                                 std::function<void()> action) = 0;
    /// Cancels every pending request to the target.
    virtual void cancelPreviousPerformRequests(const void* target) = 0;
    /// Cancels the pending requests to the target with that selector.
    virtual void cancelPreviousPerformRequests(const void* target, std::string_view selector) = 0;
    /// Number of requests to the target that are pending.
    virtual std::size_t pendingRequestCount(const void* target) const = 0;
};

}  // namespace orvane
