#pragma once

#include <span>

#include "foundation/value.h"
#include "store/_orvane_recording.h"

namespace orvane {

/// One span of time spent in one window of one application, or away from it.
class ORVANE_EXPORT OrvaneRecording : public _OrvaneRecording {
  public:
    static const KeyTable& classKeyTable();
    static std::span<const DerivedSeconds> derivedSeconds();

    /// From start to end; zero for an idle recording and while a date is missing.
    DecimalSeconds duration() const;
    /// What the recording holds, for log lines: "window", "application" (its name), "dateStart", "dateEnd",
    /// "idle", without those that are absent.
    Dictionary debugInfo() const;
};

}  // namespace orvane
