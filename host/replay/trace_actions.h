#pragma once

#include "host/replay/trace_json.h"

namespace orvane::host {

// One function for each action that is more than a word: each takes the action's own value, and the line for
// what stands beside it. They throw TraceProblem.

DesktopAction readDesktop(const Member& value);
EditAction readEdit(const Member& value);
NotifyAction readNotify(const Member& value, ObjectReader& line);
TrackerAction readTracker(const Member& value);
StorageAction readStorage(const Member& value);
TraceAction readQuery(const Member& value, ObjectReader& line);

/// User defaults: any value, null for none.
TraceSettings readDefaults(const Member& value);

/// Which of the texts the value is, by position; fails for any other.
std::size_t choice(const Member& value, std::initializer_list<std::string_view> texts);

}  // namespace orvane::host
