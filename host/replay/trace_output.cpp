#include "host/replay/trace_output.h"

#include <cmath>

namespace orvane::host {

namespace {

double seconds(TraceTime time) { return static_cast<double>(time.count()) / 1e6; }

}  // namespace

void TraceOutput::write(const Json& members) {
    Json line = {{"at", seconds(clock_.time())}};
    line.update(members);
    // Texts that a trace brings in are valid UTF-8; one that the library made must not end the run if it is
    // not.
    stream_ << line.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
}

void TraceOutput::error(const Error& error) {
    const auto text = [&](const char* key) {
        const auto found = error.userInfo().find(key);
        return found == error.userInfo().end() ? Json() : Json(found->second);
    };
    write({{"error",
            {{"domain", error.domain()},
             {"code", error.code()},
             {"description", error.localizedDescription()},
             {"failureReason", text(NSLocalizedFailureReasonErrorKey)}}}});
}

Json TraceOutput::date(const std::optional<Date>& date) const {
    if (!date) return {};
    // Both are counted in microseconds before they are subtracted: the difference of two dates in double
    // precision is off by more than a microsecond's half.
    const double microseconds = std::round(secondsSinceEpoch(*date) * 1e6);
    if (!(std::abs(microseconds) < 9e18)) return secondsSinceEpoch(*date) - seconds(epoch_);
    return seconds(TraceTime(static_cast<std::int64_t>(microseconds)) - epoch_);
}

Date TraceOutput::dateAt(TraceTime time) const { return dateFromSecondsSinceEpoch(seconds(epoch_ + time)); }

}  // namespace orvane::host
