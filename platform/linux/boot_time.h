#pragma once

#include <ctime>

#include "foundation/internal.h"

namespace orvane {

/// Seconds on a clock that runs on while the machine sleeps and that nobody sets.
inline double secondsSinceBoot() {
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

}  // namespace orvane
