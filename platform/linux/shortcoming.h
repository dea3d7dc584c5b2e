#pragma once

#include <string>

#include "foundation/internal.h"

namespace orvane {

/// Why a service of the desktop gives less than it could, for diagnoses.
struct Shortcoming {
    /// What is missing, as a clause without a full stop.
    std::string problem;
    /// The one command that mends it; empty when no command does.
    std::string remedy;
};

}  // namespace orvane
