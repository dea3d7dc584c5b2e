#include "host/replay/trace_reader.h"

#include <array>

#include "host/replay/trace_actions.h"
#include "host/replay/trace_time.h"

namespace orvane::host {

namespace {

constexpr std::array<std::string_view, 11> actionKeys = {"desktop",  "input",   "idleSeconds", "notify",
                                                         "defaults", "tracker", "call",        "clockStep",
                                                         "edit",     "storage", "current"};
constexpr std::string_view queryKey = "query";

bool isBlank(std::string_view line) { return line.find_first_not_of(" \t\r") == std::string_view::npos; }

void requireTrue(const Member& value) {
    if (!value.boolean()) value.fail("can only be true");
}

TraceHeader readHeader(const Json& json) {
    ObjectReader line(Member(json, ""));
    const auto version = line.take("trace");
    if (!version) throw TraceProblem("the header is missing");
    if (version->number() != 1) version->fail("is not 1, the only format known");
    TraceHeader header;
    const Member epoch = line.require("epoch");
    const auto time = parseEpoch(epoch.text());
    if (!time) epoch.fail("is not a date and time such as \"2026-03-02T08:00:00Z\"");
    header.epoch = *time;
    if (const auto zone = line.take("timezone")) {
        header.timezone = zone->text();
        if (!isKnownTimeZone(header.timezone)) zone->fail("is not a known time zone");
    }
    if (const auto start = line.take("start")) header.start = start->boolean();
    if (const auto defaults = line.take("defaults")) header.defaults = readDefaults(*defaults);
    line.finish();
    return header;
}

TraceAction readAction(std::string_view key, const Member& value, ObjectReader& line) {
    if (key == "desktop") return readDesktop(value);
    if (key == "input") {
        requireTrue(value);
        return InputAction{};
    }
    if (key == "idleSeconds") return IdleAction{value.time()};
    if (key == "notify") return readNotify(value, line);
    if (key == "defaults") return DefaultsAction{readDefaults(value)};
    if (key == "tracker") return readTracker(value);
    if (key == "call")
        return static_cast<CallAction>(choice(value, {"sharedOrvane", "start:", "stop:", "poll"}));
    if (key == "clockStep") return ClockStepAction{value.time()};
    if (key == "edit") return readEdit(value);
    if (key == "storage") return readStorage(value);
    if (key == "current") return static_cast<CurrentAction>(choice(value, {"refresh", "delete", "reset"}));
    return readQuery(value, line);
}

/// The one action of the line.
std::string_view actionOf(const ObjectReader& line) {
    std::string_view found;
    const auto look = [&](std::string_view key) {
        if (!line.has(key)) return;
        if (!found.empty())
            throw TraceProblem("two actions: \"" + std::string(found) + "\" and \"" + std::string(key) +
                               "\"");
        found = key;
    };
    for (const std::string_view key : actionKeys) look(key);
    look(queryKey);
    if (found.empty()) throw TraceProblem("no action, or none that is known");
    return found;
}

}  // namespace

bool TraceReader::readLine(std::string& line) {
    while (std::getline(input_, line)) {
        ++lineNumber_;
        if (!isBlank(line)) return true;
    }
    return false;
}

std::variant<TraceHeader, TraceFailure> TraceReader::header() {
    std::string line;
    if (!readLine(line)) {
        if (input_.bad()) return TraceFailure{lineNumber_ + 1, "the trace cannot be read"};
        return TraceFailure{lineNumber_ + 1, "the header is missing"};
    }
    try {
        return readHeader(parseJson(line));
    } catch (const TraceProblem& problem) {
        return failure(problem.what());
    }
}

std::variant<TraceLine, TraceEnd, TraceFailure> TraceReader::next() {
    std::string text;
    if (!readLine(text)) {
        if (input_.bad()) return TraceFailure{lineNumber_ + 1, "the trace cannot be read"};
        return TraceEnd{};
    }
    try {
        const Json json = parseJson(text);
        ObjectReader line(Member(json, ""));
        TraceLine result;
        const Member at = line.require("at");
        result.at = at.time();
        if (result.at < last_) at.fail("runs backwards");
        const std::string_view key = actionOf(line);
        result.action = readAction(key, line.require(key), line);
        line.finish();
        last_ = result.at;
        return result;
    } catch (const TraceProblem& problem) {
        return failure(problem.what());
    }
}

bool worksWithoutTracker(const TraceAction& action) {
    if (const auto* call = std::get_if<CallAction>(&action)) return *call == CallAction::sharedOrvane;
    return std::holds_alternative<DesktopAction>(action) || std::holds_alternative<InputAction>(action) ||
           std::holds_alternative<IdleAction>(action) || std::holds_alternative<DefaultsAction>(action) ||
           std::holds_alternative<ClockStepAction>(action) || std::holds_alternative<NotifyAction>(action) ||
           std::holds_alternative<StorageAction>(action) || std::holds_alternative<PresenceQuery>(action) ||
           std::holds_alternative<StateQuery>(action);
}

}  // namespace orvane::host
