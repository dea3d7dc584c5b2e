#pragma once

#include "foundation/error.h"

namespace orvane {

inline constexpr const char* NSApplicationWillTerminateNotification =
    "NSApplicationWillTerminateNotification";

/// The program that the library is loaded into. Its address is the sender of the termination notice above.
class ORVANE_EXPORT HostApplication {
  public:
    virtual ~HostApplication() = default;

    /// Shows an error to the user. Main thread only.
    virtual void presentError(const Error& error) = 0;
};

}  // namespace orvane
