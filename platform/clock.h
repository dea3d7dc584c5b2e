#pragma once

#include "foundation/date.h"

namespace orvane {

/// Tells the time of day. Any thread.
class ORVANE_EXPORT Clock {
  public:
    virtual ~Clock() = default;

    virtual Date now() = 0;
};

}  // namespace orvane
