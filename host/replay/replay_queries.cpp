#include <algorithm>
#include <thread>
#include <tuple>

#include "host/replay/creation_order.h"
#include "host/replay/replay_session.h"
#include "reporting/orvane_app_for_range.h"
#include "reporting/orvane_presence.h"
#include "store/orvane_app.h"
#include "store/orvane_group.h"

namespace orvane::host {

namespace {

using Items = std::vector<Ref<RangeItem>>;
using Recordings = std::vector<Ref<OrvaneRecording>>;

/// An optional that sorts behind every value when it is absent.
template <class T>
class AbsentLast {
  public:
    AbsentLast(std::optional<T> value) : value_(std::move(value)) {}
    friend bool operator<(const AbsentLast& left, const AbsentLast& right) {
        if (!left.value_ || !right.value_) return left.value_.has_value() && !right.value_;
        return *left.value_ < *right.value_;
    }

  private:
    std::optional<T> value_;
};

std::optional<std::string> owned(std::optional<std::string_view> text) {
    return text ? std::optional<std::string>(*text) : std::nullopt;
}
using SortText = AbsentLast<std::string>;
using SortDate = AbsentLast<Date>;

/// Sorts by what `key` makes of each object, which is asked once for each; equal ones in the order of
/// creation.
template <class T, class Key>
void sortBy(std::vector<Ref<T>>& objects, Key key) {
    std::sort(objects.begin(), objects.end(), wasCreatedBefore<T>);
    using Row = std::pair<decltype(key(*objects.front())), Ref<T>>;
    std::vector<Row> rows;
    for (Ref<T>& object : objects) {
        auto objectKey = key(*object);
        rows.emplace_back(std::move(objectKey), std::move(object));
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const Row& left, const Row& right) { return left.first < right.first; });
    for (std::size_t i = 0; i < rows.size(); ++i) objects[i] = std::move(rows[i].second);
}

std::optional<std::string> applicationIdentifier(const OrvaneRecording& recording) {
    const Ref<OrvaneApp> application = recording.application();
    return application ? owned(application->identifier()) : std::nullopt;
}

Json recordingJson(const OrvaneRecording& recording, const TraceOutput& output) {
    return {{"application", optionalJson(applicationIdentifier(recording))},
            {"startDate", output.date(recording.startDate())},
            {"endDate", output.date(recording.endDate())},
            {"windowName", optionalJson(recording.windowName())},
            {"idle", optionalJson(recording.idle())},
            {"duration", decimalText(recording.duration())}};
}

Json recordingsJson(const Recordings& recordings, const TraceOutput& output) {
    Json result = Json::array();
    for (const auto& recording : recordings) result.push_back(recordingJson(*recording, output));
    return result;
}

Json locationsJson(const RangeItem& item) {
    const auto locations = item.URLs();
    if (!locations) return {};
    // Paths compare part by part; as texts their order is another.
    std::vector<std::string> texts(locations->begin(), locations->end());
    std::sort(texts.begin(), texts.end());
    return texts;
}

Json itemJson(const RangeItem& item, const TraceOutput& output) {
    const auto* application = dynamic_cast<const OrvaneAppForRange*>(&item);
    Recordings recordings = item.recordings();
    if (!application)
        sortBy(recordings, [](const OrvaneRecording& recording) {
            return std::tuple(SortDate(recording.startDate()), SortDate(recording.endDate()),
                              SortText(owned(recording.windowName())));
        });
    Json result = {
        {"kind", application ? "app" : "group"},         {"name", optionalJson(item.name())},
        {"identifier", optionalJson(item.identifier())}, {"uid", optionalJson(item.uid())},
        {"color", optionalJson(item.color())},           {"duration", decimalText(item.duration())}};
    if (application) result["lastUsedDate"] = output.date(application->lastUsedDate());
    result["editableName"] = item.editableName();
    if (application) result["path"] = optionalJson(application->path());
    result["URLs"] = locationsJson(item);
    result["recordings"] = recordingsJson(recordings, output);
    result["appsForRange"] = Json::array();
    for (const auto& below : item.appsForRange()) result["appsForRange"].push_back(itemJson(*below, output));
    return result;
}

/// The report as a host has it that does not want to hold up its main thread: in a child context, on a thread
/// of its own. Here the main thread waits for it.
Items itemsFromChildContext(Orvane& tracker, Date from, Date to) {
    ManagedObjectContext* main = tracker.managedObjectContext();
    if (!main) return {};
    ManagedObjectContext child(ConcurrencyType::privateQueue);
    child.setParentContext(main);
    Items items;
    std::thread([&] { items = tracker.itemsFromDate(from, to, child); }).join();
    for (const auto& item : items) item->setMainContext();
    return items;
}

template <class T>
std::vector<Ref<T>> fetchAll(ManagedObjectContext* context) {
    if (!context) return {};
    // The predicate keeps the fetch out of the log, which tells of those without one.
    return context->fetch<T>(
        {.entityName = std::string(T::entityName()), .predicate = Predicate::withFormat("TRUEPREDICATE")});
}

Json applicationsJson(ManagedObjectContext* context, const TraceOutput& output) {
    auto applications = fetchAll<OrvaneApp>(context);
    sortBy(applications,
           [](const OrvaneApp& application) { return SortText(owned(application.identifier())); });
    Json result = Json::array();
    for (const auto& application : applications) {
        const Ref<OrvaneGroup> group = application->group();
        result.push_back({{"identifier", optionalJson(application->identifier())},
                          {"name", optionalJson(application->name())},
                          {"color", optionalJson(application->color())},
                          {"disabled", optionalJson(application->disabled())},
                          {"group", group ? optionalJson(group->name()) : Json()},
                          {"duration", decimalText(application->duration())},
                          {"lastUsedDate", output.date(application->lastUsedDate())}});
    }
    return result;
}

Json groupsJson(ManagedObjectContext* context) {
    auto groups = fetchAll<OrvaneGroup>(context);
    sortBy(groups, [](const OrvaneGroup& group) { return SortText(owned(group.name())); });
    Json result = Json::array();
    for (const auto& group : groups)
        result.push_back({{"name", optionalJson(group->name())},
                          {"category", optionalJson(group->category())},
                          {"color", optionalJson(group->color())},
                          {"disabled", optionalJson(group->disabled())}});
    return result;
}

Recordings sortedRecordings(ManagedObjectContext* context) {
    auto recordings = fetchAll<OrvaneRecording>(context);
    sortBy(recordings, [](const OrvaneRecording& recording) {
        return std::tuple(SortDate(recording.startDate()), SortDate(recording.endDate()),
                          SortText(applicationIdentifier(recording)),
                          SortText(owned(recording.windowName())));
    });
    return recordings;
}

/// A number or boolean as it is; anything else, none included, as null.
Json enabledJson(const Value& value) {
    if (const bool* boolean = value.asBool()) return *boolean;
    return value.isNumber() ? Json(value.doubleValue()) : Json();
}

}  // namespace

ReplaySession::Problem ReplaySession::apply(const ItemsQuery& query) {
    const Date from = output_.dateAt(query.from);
    const Date to = output_.dateAt(query.to);
    const Items items =
        query.inChildContext ? itemsFromChildContext(tracker(), from, to) : tracker().itemsFromDate(from, to);
    Json list = Json::array();
    for (const auto& item : items) list.push_back(itemJson(*item, output_));
    output_.write({{"items", std::move(list)}});
    return std::nullopt;
}

ReplaySession::Problem ReplaySession::apply(const PresenceQuery& query) {
    hasTracker_ = true;
    const auto presence = OrvanePresence::presenceForDate(output_.dateAt(query.date));
    output_.write({{"presence",
                    {{"startDate", output_.date(presence->startDate())},
                     {"endDate", output_.date(presence->endDate())},
                     {"label", presence->label()},
                     {"recordings", presence->recordings().size()}}}});
    return std::nullopt;
}

ReplaySession::Problem ReplaySession::apply(const StateQuery&) {
    if (!hasTracker_) {
        output_.write({{"state", nullptr}});
        return std::nullopt;
    }
    Orvane& orvane = tracker();
    Json current;
    if (const Ref<OrvaneRecording>& recording = orvane.currentRecording())
        current = recording->isFault() ? Json("fault") : recordingJson(*recording, output_);
    Json undo;
    if (ManagedObjectContext* context = orvane.existingManagedObjectContext();
        context && context->undoManager())
        undo = context->undoManager()->isUndoRegistrationEnabled();
    output_.write({{"state",
                    {{"enabled", enabledJson(orvane.enabled())},
                     {"idleTime", orvane.idleTime()},
                     {"idleThreshold", orvane.idleThreshold()},
                     {"currentRecording", std::move(current)},
                     {"pendingRequests", platform_->runLoop().pendingRequestCount(&orvane)},
                     {"undoRegistrationEnabled", std::move(undo)}}}});
    return std::nullopt;
}

ReplaySession::Problem ReplaySession::apply(const DumpQuery&) {
    ManagedObjectContext* context = tracker().managedObjectContext();
    output_.write({{"applications", applicationsJson(context, output_)},
                   {"groups", groupsJson(context)},
                   {"recordings", recordingsJson(sortedRecordings(context), output_)}});
    return std::nullopt;
}

}  // namespace orvane::host
