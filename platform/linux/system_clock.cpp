#include "platform/linux/system_clock.h"

namespace orvane {

Date SystemClock::now() { return std::chrono::system_clock::now(); }

}  // namespace orvane
