#include "platform/simulated/virtual_clock.h"

namespace orvane {

Date VirtualClock::now() {
    // One division of the exact count: adding seconds in double precision would drift from it.
    return dateFromSecondsSinceEpoch(static_cast<double>(wallTime().count()) / 1e6);
}

void VirtualClock::moveTo(Time time) {
    if (time.count() > time_.load()) time_ = time.count();
}

}  // namespace orvane
