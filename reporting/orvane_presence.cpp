#include "reporting/orvane_presence.h"

#include <algorithm>
#include <cstdio>

#include "foundation/key_conversion.h"
#include "tracker/orvane.h"
#include "util/day_boundaries.h"

namespace orvane {

namespace {

using Seconds = std::chrono::duration<double>;

constexpr Seconds edgeMargin{3600};  // the corrections look no further from midnight than this
constexpr Seconds gapLimit{21600};   // a longer break ends a night's activity
constexpr Seconds dayShift{86400};
constexpr const char* absentText = "(null)";

struct Span {
    Date start;
    Date end;
};

std::vector<Span> activeSpans(ManagedObjectContext& context, Date from, Date to, const char* order) {
    std::vector<Span> spans;
    for (const Ref<OrvaneRecording>& recording :
         context.fetch<OrvaneRecording>({.entityName = std::string(OrvaneRecording::entityName()),
         .predicate = Predicate::withFormat("idle == 0 AND startDate >= %@ AND endDate <= %@",
                                            {Value(from), Value(to)}),
         .sortOrders = {{order, true}},
         .textsWhenRead = true})) {
        const std::optional<Date> start = recording->startDate();
        const std::optional<Date> end = recording->endDate();
        if (start && end) spans.push_back({*start, *end});
    }
    return spans;
}

std::string transformed(const std::optional<Date>& date, const char* transformer) {
    return Platform::current()
        .valueTransformers()
        .transformedValue(Value(date), transformer)
        .value_or(absentText);
}

}  // namespace

const KeyTable& OrvanePresence::classKeyTable() {
    static const KeyTable table{
        "OrvanePresence",
        nullptr,
        {keys::readWrite<"startDate", &OrvanePresence::startDate, &OrvanePresence::setStartDate>(),
         keys::readWrite<"endDate", &OrvanePresence::endDate, &OrvanePresence::setEndDate>(),
         keys::readWrite<"recordings", &OrvanePresence::recordings, &OrvanePresence::setRecordings>(),
         keys::readOnly<"label", &OrvanePresence::label>({"startDate", "endDate"})}};
    return table;
}

Ref<OrvanePresence> OrvanePresence::presenceForDate(Date date) {
    ManagedObjectContext* context = Orvane::sharedOrvane().managedObjectContext();
    auto presence = makeRef<OrvanePresence>();
    if (!context) return presence;
    const ReadScope scope(*context);
    const Date dayStart = orvaneDayStart(date);
    const Date dayEnd = orvaneDayEnd(date);

    const std::vector<Span> today = activeSpans(*context, dayStart, dayEnd, "startDate");
    if (today.empty()) return presence;
    Date start = today.front().start;
    Date end = today.front().end;
    for (const Span& span : today) end = std::max(end, span.end);

    if (start - dayStart < edgeMargin) {
        // From start to start: a long recording counts as part of the break after it.
        Date previous = start;
        for (const Span& span : today) {
            if (span.start - previous > gapLimit) {
                start = span.start;
                break;
            }
            previous = span.start;
        }
    }
    if (dayEnd - end < edgeMargin) {
        // From end to end, by plain days of 86,400 seconds also when the clocks change.
        for (const Span& span : activeSpans(*context, dayStart + dayShift, dayEnd + dayShift, "endDate")) {
            if (span.end - end > gapLimit) break;
            end = span.end;
        }
    }
    presence->setStartDate(start);
    presence->setEndDate(end);
    return presence;
}

std::string OrvanePresence::label() const {
    if (!startDate_) return "-";
    return transformed(startDate_, shortDateTransformerName) + " • " +
           transformed(startDate_, shortTimeTransformerName) + " - " +
           transformed(endDate_, shortTimeTransformerName);
}

std::string OrvanePresence::description() const {
    char address[32];
    std::snprintf(address, sizeof address, "%p", static_cast<const void*>(this));
    const auto text = [](const std::optional<Date>& date) {
        return date ? orvane::description(*date) : std::string(absentText);
    };
    return "<OrvanePresence: " + std::string(address) + "> start:" + text(startDate_) +
           " end:" + text(endDate_);
}

}  // namespace orvane
