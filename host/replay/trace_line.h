#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "foundation/value.h"
#include "platform/simulated/simulated_accessibility.h"
#include "platform/simulated/simulated_workspace.h"

namespace orvane::host {

// What the lines of a trace say. All times are whole microseconds since the trace's epoch unless said
// otherwise.

using TraceTime = std::chrono::microseconds;

/// Keys and values in the order of the trace; none stands for null.
using TraceSettings = std::vector<std::pair<std::string, Value>>;

/// The first line.
struct TraceHeader {
    TraceTime epoch{};  ///< since the Unix epoch
    std::string timezone = "UTC";
    bool start = true;
    TraceSettings defaults;
};

struct SimulatedAccessibilityState {
    bool trusted = false;
    SimulatedAccessibility::FocusedWindows focusedWindows;
};

/// What stands in it replaces that part of the desktop.
struct DesktopAction {
    std::optional<std::optional<RunningApplication>> frontmost;
    std::optional<std::vector<Dictionary>> windows;
    std::optional<SimulatedAccessibilityState> accessibility;
    std::optional<SimulatedWorkspace::Applications> applications;
};

struct InputAction {};

struct IdleAction {
    TraceTime sinceLastInput{};
};

struct NotifyAction {
    std::string name;
    Dictionary userInfo;
    bool fromHost = true;
};

struct DefaultsAction {
    TraceSettings values;
};

/// Keys: "idleThreshold" (a number or none), "url" (a text or none), "enabled" (a boolean or none).
struct TrackerAction {
    TraceSettings values;
};

enum class CallAction { sharedOrvane, start, stop, poll };

struct ClockStepAction {
    TraceTime step{};
};

struct NewRecording {
    std::optional<std::string> application;
    TraceTime start{};
    std::optional<TraceTime> end;
    std::optional<std::string> window;
    std::optional<bool> idle;
};

/// `settings` holds the attributes to set, "group" (the name of a Group or none) and "resetColor" (true).
struct EditAction {
    enum class Kind { insertGroup, editApplication, editGroup, insertRecording };

    Kind kind = Kind::insertGroup;
    std::string name;  ///< of the Group, or the Application's identifier
    TraceSettings settings;
    NewRecording recording;
    bool save = true;
};

/// Whether each of the three works from now on; absent ones stay as they are.
struct StorageAction {
    std::optional<bool> open;
    std::optional<bool> reads;
    std::optional<bool> writes;
};

enum class CurrentAction { refresh, remove, reset };

struct ItemsQuery {
    TraceTime from{};
    TraceTime to{};
    bool inChildContext = false;
};

struct PresenceQuery {
    TraceTime date{};
};

struct StateQuery {};
struct DumpQuery {};

using TraceAction = std::variant<DesktopAction, InputAction, IdleAction, NotifyAction, DefaultsAction,
                                 TrackerAction, CallAction, ClockStepAction, EditAction, StorageAction,
                                 CurrentAction, ItemsQuery, PresenceQuery, StateQuery, DumpQuery>;

/// Any line but the first.
struct TraceLine {
    TraceTime at{};
    TraceAction action;
};

}  // namespace orvane::host
