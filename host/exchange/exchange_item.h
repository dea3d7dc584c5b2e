#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvane::host {

// What the store holds, as plain values: the attributes under the names that the store gives them.

struct GroupItem {
    std::optional<std::string> identifier;
    std::optional<std::string> name;
    std::optional<std::string> category;
    std::optional<std::string> color;
    std::optional<bool> disabled;

    friend bool operator==(const GroupItem&, const GroupItem&) = default;
};

struct ApplicationItem {
    std::optional<std::string> identifier;
    std::optional<std::string> name;
    std::optional<std::string> color;
    std::optional<bool> disabled;
    std::optional<std::size_t> group;  ///< index of a group that was given before

    friend bool operator==(const ApplicationItem&, const ApplicationItem&) = default;
};

/// Dates are seconds since the Unix epoch. The window's text belongs to whoever made the item.
struct RecordingItem {
    std::optional<double> start;
    std::optional<double> end;
    std::optional<bool> idle;
    std::optional<std::string_view> window;
    std::optional<std::size_t> application;  ///< index of an application that was given before
};

}  // namespace orvane::host
