#pragma once

#include <functional>

#include "foundation/error.h"

namespace orvane {

/// Shows an error to the user in the host's own manner.
using ErrorPresenter = std::function<void(const Error&)>;

/// Registers what shows errors on the Linux desktop, for the whole process; none goes back to writing them to
/// the system log. Main thread only.
ORVANE_EXPORT void setErrorPresenter(ErrorPresenter presenter);

}  // namespace orvane
