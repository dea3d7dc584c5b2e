#pragma once

#include "foundation/internal.h"
#include "platform/clock.h"

namespace orvane {

/// The machine's time of day. Any thread.
class SystemClock : public Clock {
  public:
    Date now() override;
};

}  // namespace orvane
