#pragma once

#include "foundation/date.h"
#include "foundation/export.h"

namespace orvane {

// The local calendar day is that of the process's time zone, read afresh at each call, in the Gregorian
// calendar. Where the clocks change, a day reaches from the first to the last moment that carries its date:
//   - A skipped midnight gives the first moment of the day (01:00:00, say), a skipped 23:59:59 the last whole
//     second of it.
//   - A repeated midnight gives the earlier one, a repeated 23:59:59 the later one.
// A date that has no calendar day, such as an infinite one or one beyond 2^53 seconds from the epoch, is
// returned unchanged. Any thread.

/// 00:00:00 of the date's local day.
ORVANE_EXPORT Date orvaneDayStart(Date date);

/// 23:59:59 of the date's local day, without a fraction: 23:59:59.5 lies after the end of its day.
ORVANE_EXPORT Date orvaneDayEnd(Date date);

/// The date's whole second; the one before it for a fraction before 1970 too.
ORVANE_EXPORT Date orvaneSecondStart(Date date);

}  // namespace orvane
