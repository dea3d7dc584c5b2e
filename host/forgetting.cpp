#include "host/forgetting.h"

#include <algorithm>

#include "store/orvane_group.h"

namespace orvane::host {

namespace {

std::string shownName(const OrvaneApp& app) {
    return std::string(app.name().value_or(app.identifier().value_or("")));
}

DecimalSeconds length(Date from, Date until) {
    return decimalSeconds(secondsSinceEpoch(until) - secondsSinceEpoch(from));
}

}  // namespace

Forgetting::Part Forgetting::forgottenPart(const Span& span) const {
    if (!time_) return Part::whole;
    // One date alone is a point in time; none lies in no time that was named.
    const auto start = span.start ? span.start : span.end;
    const auto end = span.end ? span.end : span.start;
    if (!start) return Part::none;
    const Date first = std::min(*start, *end);
    const Date last = std::max(*start, *end);
    if (first >= time_->until || (first == last ? first < time_->from : last <= time_->from))
        return Part::none;
    return *start < time_->from || *end > time_->until ? Part::cut : Part::whole;
}

std::optional<ForgetReport> Forgetting::find(Error* error) {
    FetchRequest request{std::string(OrvaneRecording::entityName()), std::nullopt};
    // Only of those that are cut.
    request.textsWhenRead = true;
    std::string format = "TRUEPREDICATE";
    std::vector<Value> arguments;
    if (time_) {
        format = "NOT (startDate < %@ AND endDate < %@) AND NOT (startDate >= %@ AND endDate >= %@)";
        arguments = {time_->from, time_->from, time_->until, time_->until};
    }
    if (applications_) {
        format += " AND application IN %@";
        arguments.emplace_back(Value::Array(applications_->begin(), applications_->end()));
    }
    request.predicate = Predicate::withFormat(format, arguments);
    Error failure;
    recordings_ = context_.fetch<OrvaneRecording>(request, &failure);
    if (failure) {
        assignError(error, failure);
        return std::nullopt;
    }
    ForgetReport report;
    std::erase_if(recordings_, [&](const Ref<OrvaneRecording>& recording) {
        const Span span{recording->startDate(), recording->endDate()};
        const Part part = forgottenPart(span);
        if (part == Part::none) return true;
        ++(part == Part::cut ? report.cut : report.recordings);
        if (span.start && span.end && *span.start < *span.end)
            report.duration +=
                time_ ? length(std::max(*span.start, time_->from), std::min(*span.end, time_->until))
                      : length(*span.start, *span.end);
        return false;
    });
    return report;
}

void Forgetting::keepRest(OrvaneRecording& recording) {
    const auto keep = [&](Date from, Date until) {
        if (from >= until) return;
        const auto rest = OrvaneRecording::insertInManagedObjectContext(context_);
        rest->setStartDate(from);
        rest->setEndDate(until);
        rest->setApplication(recording.application());
        rest->setWindowName(recording.windowName());
        rest->setIdle(recording.idle());
    };
    const Date start = *recording.startDate();
    const Date end = *recording.endDate();
    keep(start, std::min(end, time_->from));
    keep(std::max(start, time_->until), end);
}

void Forgetting::apply(ForgetReport& report) {
    if (!applications_) {
        applications_.emplace();
        for (const Ref<OrvaneRecording>& recording : recordings_)
            if (Ref<OrvaneApp> app = recording->application()) applications_->push_back(std::move(app));
        const auto byAddress = [](const Ref<OrvaneApp>& left, const Ref<OrvaneApp>& right) {
            return left.get() < right.get();
        };
        std::sort(applications_->begin(), applications_->end(), byAddress);
        applications_->erase(std::unique(applications_->begin(), applications_->end()), applications_->end());
    }
    for (const Ref<OrvaneRecording>& recording : recordings_) {
        if (forgottenPart({recording->startDate(), recording->endDate()}) == Part::cut) keepRest(*recording);
        context_.deleteObject(*recording);
    }
    recordings_.clear();
    removeEmptyApplications(report);
}

void Forgetting::removeEmptyApplications(ForgetReport& report) {
    for (const Ref<OrvaneApp>& app : *applications_) {
        const auto left =
            context_.countForFetchRequest({std::string(OrvaneRecording::entityName()),
                                           Predicate::withFormat("application == %@", {Value(app)}),
                                           {},
                                           1});
        if (!left || *left > 0) continue;
        const bool isKept = app->group() || app->disabledValue();
        (isKept ? report.keptApplications : report.removedApplications).push_back(shownName(*app));
        if (!isKept) context_.deleteObject(*app);
    }
    std::sort(report.removedApplications.begin(), report.removedApplications.end());
    std::sort(report.keptApplications.begin(), report.keptApplications.end());
}

}  // namespace orvane::host
