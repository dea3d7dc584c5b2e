#include "host/exchange/store_exporter.h"

#include "host/exchange/interruption.h"
#include "host/exchange/stored_objects.h"
#include "host/exchange/stored_recordings.h"

namespace orvane::host {

namespace {

std::optional<std::string> text(std::optional<std::string_view> value) {
    return value ? std::optional<std::string>(*value) : std::nullopt;
}

std::optional<double> seconds(std::optional<Date> date) {
    return date ? std::optional(secondsSinceEpoch(*date)) : std::nullopt;
}

RecordingFilter recordingsOf(const std::optional<DateRange>& range) {
    if (!range) return {std::nullopt, "TRUEPREDICATE", {}};
    return {range->to, "startDate >= %@ OR endDate > %@", {range->from, range->from}};
}

}  // namespace

bool StoreExporter::run(const std::optional<DateRange>& range, Error* error) {
    writer_.begin();
    if (!range && !writeAllItems(error)) return false;
    progress_.begin("Exporting");
    return forEachRecording(context_, recordingsOf(range), error,
                            [&](const OrvaneRecording& recording, std::size_t total) {
                                write(recording);
                                progress_.advance(++recordings_, total);
                                return !Interruption::requested();
                            });
}

bool StoreExporter::writeAllItems(Error* error) {
    const auto groups = storedObjects<OrvaneGroup>(context_, error);
    if (!groups) return false;
    for (const Ref<OrvaneGroup>& group : *groups) indexOf(*group);
    const auto applications = storedObjects<OrvaneApp>(context_, error);
    if (!applications) return false;
    for (const Ref<OrvaneApp>& application : *applications) indexOf(*application);
    return true;
}

std::size_t StoreExporter::indexOf(const OrvaneGroup& group) {
    const auto [place, isNew] = groups_.emplace(&group, groups_.size());
    if (isNew) {
        held_.emplace_back(const_cast<OrvaneGroup*>(&group));
        writer_.group({text(group.identifier()), text(group.name()), text(group.category()),
                       text(group.color()), group.disabled()});
    }
    return place->second;
}

std::size_t StoreExporter::indexOf(const OrvaneApp& application) {
    if (const auto known = applications_.find(&application); known != applications_.end())
        return known->second;
    held_.emplace_back(const_cast<OrvaneApp*>(&application));
    const Ref<OrvaneGroup> group = application.group();
    const std::optional<std::size_t> groupIndex = group ? std::optional(indexOf(*group)) : std::nullopt;
    writer_.application({text(application.identifier()), text(application.name()), text(application.color()),
                         application.disabled(), groupIndex});
    return applications_.emplace(&application, applications_.size()).first->second;
}

void StoreExporter::write(const OrvaneRecording& recording) {
    const Ref<OrvaneApp> application = recording.application();
    writer_.recording({seconds(recording.startDate()), seconds(recording.endDate()), recording.idle(),
                       recording.windowName(),
                       application ? std::optional(indexOf(*application)) : std::nullopt});
}

}  // namespace orvane::host
