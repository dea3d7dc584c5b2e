#pragma once

#include <optional>
#include <ostream>
#include <string_view>

#include "foundation/error.h"
#include "host/replay/trace_json.h"
#include "platform/simulated/virtual_clock.h"

namespace orvane::host {

/// Writes what a replay prints: one JSON object a line, each with the time of the virtual clock.
class TraceOutput {
  public:
    /// Stream and clock must outlive the output. `epoch` is the trace's, since the Unix epoch.
    TraceOutput(std::ostream& stream, const VirtualClock& clock, TraceTime epoch)
        : stream_(stream), clock_(clock), epoch_(epoch) {}

    /// Writes the members of the object after "at".
    void write(const Json& members);
    void log(std::string_view line) { write({{"log", line}}); }
    void error(const Error& error);

    /// A date as seconds since the trace's epoch, to the microsecond; null for none.
    Json date(const std::optional<Date>& date) const;
    /// The date of a time of the trace.
    Date dateAt(TraceTime time) const;

  private:
    std::ostream& stream_;
    const VirtualClock& clock_;
    TraceTime epoch_;
};

/// The value, or null for none.
template <class T>
Json optionalJson(const std::optional<T>& value) {
    return value ? Json(*value) : Json();
}

}  // namespace orvane::host
