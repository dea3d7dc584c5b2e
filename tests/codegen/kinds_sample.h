#pragma once

#include "_kinds_sample.h"

namespace kinds {

/// Adds nothing to what was generated.
class KindsSample : public _KindsSample {};

}  // namespace kinds
