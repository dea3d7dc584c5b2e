#include <algorithm>

#include "host/replay/creation_order.h"
#include "host/replay/replay_session.h"
#include "store/orvane_app.h"
#include "store/orvane_group.h"

namespace orvane::host {

namespace {

/// The oldest object of the class with that text under the key, unsaved ones included; none when there is
/// none.
template <class T>
Ref<T> oldest(ManagedObjectContext& context, std::string_view key, const std::string& text) {
    const auto found =
        context.fetch<T>({.entityName = std::string(T::entityName()),
                          .predicate = Predicate::withFormat("%K == %@", {Value(key), Value(text)})});
    const auto first = std::min_element(found.begin(), found.end(), wasCreatedBefore<T>);
    return first == found.end() ? nullptr : *first;
}

std::string notStored(std::string_view kind, const std::string& name) {
    return "there is no " + std::string(kind) + " " + Json(name).dump();
}

/// Sets what the edit says, in its order. `group` is the one that the edit names, if it names one.
void applySettings(ManagedObject& object, const TraceSettings& settings, const Ref<OrvaneGroup>& group) {
    for (const auto& [key, value] : settings) {
        if (key == "group")
            object.setValueForKey(group, key);
        else if (key == "resetColor")
            static_cast<OrvaneApp&>(object).resetColor();
        else
            object.setValueForKey(value, key);
    }
}

void insertRecording(ManagedObjectContext& context, const NewRecording& description,
                     const Ref<OrvaneApp>& application, const TraceOutput& output) {
    const auto recording = context.insert<OrvaneRecording>();
    recording->setStartDate(output.dateAt(description.start));
    if (description.end) recording->setEndDate(output.dateAt(*description.end));
    recording->setApplication(application);
    recording->setWindowName(description.window);
    recording->setIdle(description.idle);
}

}  // namespace

ReplaySession::Problem ReplaySession::apply(const EditAction& action) {
    ManagedObjectContext* context = tracker().managedObjectContext();
    // What cannot be read cannot be edited: a host would not know its objects from missing ones.
    if (!context || platform_->fileManager().failingFileSystem().readsFail()) return std::nullopt;

    // All names are looked up before anything is changed.
    Ref<OrvaneApp> application;
    Ref<OrvaneGroup> group;
    const auto identifier = action.kind == EditAction::Kind::editApplication ? std::optional(action.name)
                                                                             : action.recording.application;
    if (identifier) {
        application = oldest<OrvaneApp>(*context, "identifier", *identifier);
        if (!application) return notStored("Application", *identifier);
    }
    if (action.kind == EditAction::Kind::editGroup) {
        group = oldest<OrvaneGroup>(*context, "name", action.name);
        if (!group) return notStored("Group", action.name);
    }
    for (const auto& [key, value] : action.settings) {
        const std::string* name = key == "group" ? value.asString() : nullptr;
        if (!name) continue;
        group = oldest<OrvaneGroup>(*context, "name", *name);
        if (!group) return notStored("Group", *name);
    }

    switch (action.kind) {
        case EditAction::Kind::insertGroup: {
            const auto inserted = context->insert<OrvaneGroup>();
            inserted->setName(action.name);
            applySettings(*inserted, action.settings, nullptr);
            break;
        }
        case EditAction::Kind::editApplication:
            applySettings(*application, action.settings, group);
            break;
        case EditAction::Kind::editGroup:
            applySettings(*group, action.settings, nullptr);
            break;
        case EditAction::Kind::insertRecording:
            insertRecording(*context, action.recording, application, output_);
            break;
    }
    if (action.save) context->save();
    return std::nullopt;
}

}  // namespace orvane::host
