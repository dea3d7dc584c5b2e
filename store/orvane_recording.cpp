#include "store/orvane_recording.h"

#include "foundation/key_conversion.h"
#include "store/orvane_app.h"

namespace orvane {

namespace {

DecimalSeconds durationOf(std::optional<Date> start, std::optional<Date> end, bool idle) {
    if (idle || !start || !end) return DecimalSeconds(0);
    return decimalSeconds(secondsSinceEpoch(*end) - secondsSinceEpoch(*start));
}

}  // namespace

const KeyTable& OrvaneRecording::classKeyTable() {
    static const KeyTable table{
        "OrvaneRecording",
        &_OrvaneRecording::classKeyTable(),
        {
            keys::readOnly<"duration", &OrvaneRecording::duration>({"startDate", "endDate", "idle"}),
            keys::readOnly<"debugInfo", &OrvaneRecording::debugInfo>(),
        }};
    return table;
}

std::span<const DerivedSeconds> OrvaneRecording::derivedSeconds() {
    static const DerivedSeconds derived[] = {
        {"duration", {"startDate", "endDate", "idle"}, [](const StoredRow& row) {
             return durationOf(row.date(0), row.date(1), row.boolean(2).value_or(false));
         }}};
    return derived;
}

DecimalSeconds OrvaneRecording::duration() const { return durationOf(startDate(), endDate(), idleValue()); }

Dictionary OrvaneRecording::debugInfo() const {
    Dictionary info;
    info.set("window", windowName());
    if (const Ref<OrvaneApp> owner = application()) info.set("application", owner->name());
    info.set("dateStart", startDate());
    info.set("dateEnd", endDate());
    info.set("idle", idle());
    return info;
}

}  // namespace orvane
