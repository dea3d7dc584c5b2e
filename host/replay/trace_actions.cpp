#include "host/replay/trace_actions.h"

#include <algorithm>

namespace orvane::host {

namespace {

Value optionalBooleanValue(const Member& value) { return value.optionalBoolean(); }
Value optionalTextValue(const Member& value) { return value.optionalText(); }

/// Takes what else stands in an edit's object, in its order; each key must be among those the kind of edit
/// knows.
TraceSettings readSettings(const Member& edit, ObjectReader& object, std::string_view subject,
                           std::initializer_list<std::string_view> known) {
    TraceSettings result;
    for (const auto& [key, json] : edit.json().items()) {
        if (key == subject || std::find(known.begin(), known.end(), key) == known.end()) continue;
        const Member value = object.require(key);
        if (key == "disabled") {
            result.emplace_back(key, optionalBooleanValue(value));
        } else if (key == "resetColor") {
            if (!value.boolean()) value.fail("can only be true");
            result.emplace_back(key, true);
        } else {
            result.emplace_back(key, optionalTextValue(value));
        }
    }
    return result;
}

NewRecording readRecording(const Member& value) {
    ObjectReader object(value);
    NewRecording result;
    if (const auto application = object.take("application")) result.application = application->optionalText();
    result.start = object.require("start").time();
    if (const auto end = object.take("end"); end && !end->isNull()) result.end = end->time();
    if (const auto window = object.take("window")) result.window = window->optionalText();
    if (const auto idle = object.take("idle")) result.idle = idle->optionalBoolean();
    object.finish();
    return result;
}

}  // namespace

std::size_t choice(const Member& value, std::initializer_list<std::string_view> texts) {
    const std::string& text = value.text();
    std::size_t index = 0;
    for (const std::string_view candidate : texts) {
        if (text == candidate) return index;
        ++index;
    }
    value.fail("cannot be " + value.json().dump());
}

TraceSettings readDefaults(const Member& value) {
    value.requireObject();
    TraceSettings result;
    for (const auto& [key, json] : value.json().items()) result.emplace_back(key, Member(json, key).value());
    return result;
}

NotifyAction readNotify(const Member& value, ObjectReader& line) {
    NotifyAction result;
    result.name = value.text();
    if (const auto userInfo = line.take("userInfo")) result.userInfo = userInfo->dictionary();
    if (const auto sender = line.take("sender")) result.fromHost = choice(*sender, {"host", "other"}) == 0;
    return result;
}

TrackerAction readTracker(const Member& value) {
    ObjectReader object(value);
    TrackerAction result;
    for (const auto& [key, json] : value.json().items()) {
        if (key == "idleThreshold") {
            const Member threshold = object.require(key);
            if (!threshold.isNull()) threshold.number();
            result.values.emplace_back(key, threshold.value());
        } else if (key == "url") {
            result.values.emplace_back(key, optionalTextValue(object.require(key)));
        } else if (key == "enabled") {
            result.values.emplace_back(key, optionalBooleanValue(object.require(key)));
        }
    }
    object.finish();
    return result;
}

StorageAction readStorage(const Member& value) {
    ObjectReader object(value);
    const auto works = [&](std::string_view key) -> std::optional<bool> {
        const auto member = object.take(key);
        if (!member) return std::nullopt;
        return choice(*member, {"works", "fails"}) == 0;
    };
    StorageAction result{.open = works("open"), .reads = works("reads"), .writes = works("writes")};
    object.finish();
    return result;
}

EditAction readEdit(const Member& value) {
    ObjectReader object(value);
    EditAction result;
    if (const auto save = object.take("save")) result.save = save->boolean();
    // An Application's edit may name a Group, so the Application is looked for before the Group.
    if (const auto group = object.take("insertGroup")) {
        result.kind = EditAction::Kind::insertGroup;
        result.name = group->text();
        result.settings = readSettings(value, object, "insertGroup", {"category", "color", "disabled"});
    } else if (const auto recording = object.take("insertRecording")) {
        result.kind = EditAction::Kind::insertRecording;
        result.recording = readRecording(*recording);
    } else if (const auto application = object.take("application")) {
        result.kind = EditAction::Kind::editApplication;
        result.name = application->text();
        result.settings =
            readSettings(value, object, "application", {"group", "disabled", "color", "name", "resetColor"});
    } else if (const auto edited = object.take("group")) {
        result.kind = EditAction::Kind::editGroup;
        result.name = edited->text();
        result.settings = readSettings(value, object, "group", {"name", "category", "color", "disabled"});
    } else {
        value.fail("says nothing to edit");
    }
    object.finish();
    return result;
}

TraceAction readQuery(const Member& value, ObjectReader& line) {
    switch (choice(value, {"items", "presence", "state", "dump"})) {
        case 0: {
            ItemsQuery query{.from = line.require("from").time(), .to = line.require("to").time()};
            if (const auto context = line.take("context")) {
                choice(*context, {"child"});
                query.inChildContext = true;
            }
            return query;
        }
        case 1:
            return PresenceQuery{line.require("date").time()};
        case 2:
            return StateQuery{};
        default:
            return DumpQuery{};
    }
}

}  // namespace orvane::host
