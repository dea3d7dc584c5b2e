#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/exchange/exchange_item.h"

namespace orvane::host {

/// Everything that an input holds, checked and ready to be put into a store; a million recordings take some
/// fifty megabytes beside their window titles, each of which is kept once.
class ImportBatch {
  public:
    struct Recording {
        std::optional<double> start;
        std::optional<double> end;
        std::uint32_t window = 0;       ///< number of a window; 0 for none
        std::uint32_t application = 0;  ///< number of an application, counted from 1; 0 for none
        std::optional<bool> idle;

        /// Whether it covers a span of time at all.
        bool isSpan() const { return start && end && *start < *end; }
    };

    /// Each returns the index of what was added.
    std::size_t addGroup(GroupItem group);
    std::size_t addApplication(ApplicationItem application);
    void addRecording(const RecordingItem& recording);
    /// The number under which `add` keeps the window; 0 for none.
    std::uint32_t numberOfWindow(std::optional<std::string_view> window);
    void add(const Recording& recording) { recordings_.push_back(recording); }

    const std::vector<GroupItem>& groups() const { return groups_; }
    const std::vector<ApplicationItem>& applications() const { return applications_; }
    const std::vector<Recording>& recordings() const { return recordings_; }
    std::optional<std::string_view> window(const Recording& recording) const;

    /// Whether an application of the batch may be one of the store with the same name, case aside. For inputs
    /// that know no identifiers.
    bool matchesByName = false;

  private:
    std::vector<GroupItem> groups_;
    std::vector<ApplicationItem> applications_;
    std::vector<Recording> recordings_;
    std::deque<std::string> windows_;  // never moved, since the map's keys lie here
    std::unordered_map<std::string_view, std::uint32_t> windowNumbers_;
};

}  // namespace orvane::host
