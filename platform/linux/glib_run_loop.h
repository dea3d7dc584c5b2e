#pragma once

#include <memory>

#include "foundation/internal.h"
#include "platform/run_loop.h"

namespace orvane {

/// Delayed requests on GLib's default main context, through one source that wakes up only when a request is
/// due. Requests still pending when the object goes are dropped.
class GlibRunLoop : public RunLoop {
  public:
    GlibRunLoop();
    ~GlibRunLoop() override;

    void performSelector(const void* target, std::string_view selector, double delay,
                         std::function<void()> action) override;
    void cancelPreviousPerformRequests(const void* target) override;
    void cancelPreviousPerformRequests(const void* target, std::string_view selector) override;
    std::size_t pendingRequestCount(const void* target) const override;

  private:
    struct Queue;
    std::shared_ptr<Queue> queue_;
};

}  // namespace orvane
