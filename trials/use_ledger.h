#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvane::trials {

/// A while of one application in front, from its activation on: what happens in it, by second.
struct Stretch {
    std::string application;
    std::string title;
    std::int64_t length = 0;           ///< seconds
    std::vector<std::int64_t> inputs;  ///< seconds at which the user touches something; the activation is one
    std::int64_t titleChange = 0;      ///< second of the other title; 0 for none
    std::string otherTitle;
};

/// The time of use that a tracker must have recorded, counted from what happened on the desktop and from the
/// rules alone: it looks every ten seconds, and what it sees holds until it looks again.
class UseLedger {
  public:
    struct Line {
        std::string application;
        std::string title;
        bool idle = false;
        auto operator<=>(const Line&) const = default;
    };
    using Lines = std::map<Line, std::int64_t>;  ///< seconds of each; 0 for some that were not used

    /// Makes room for a line, so that what the ledger itself takes does not grow later.
    void reserve(const std::string& application, const std::string& title);
    /// `begin` is the time of the activation, in seconds since the Unix epoch.
    void add(const Stretch& stretch, std::int64_t begin);
    /// The host deletes what was recorded of the application.
    void erase(const std::string& application);
    void beginDay();

    const Lines& lines() const { return lines_; }
    /// Seconds of use that was not idle, by application: since the beginning, and of the present day.
    std::map<std::string, std::int64_t> used() const;
    const std::map<std::string, std::int64_t>& usedToday() const { return today_; }
    /// First and last moment of use that was not idle of the present day, in seconds since the Unix epoch.
    const std::optional<std::pair<std::int64_t, std::int64_t>>& presence() const { return presence_; }

  private:
    Lines lines_;
    std::map<std::string, std::int64_t> today_;
    std::optional<std::pair<std::int64_t, std::int64_t>> presence_;
};

}  // namespace orvane::trials
