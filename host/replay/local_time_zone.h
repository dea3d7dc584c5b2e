#pragma once

#include <optional>
#include <string>

#include "foundation/value.h"

namespace orvane::host {

/// Makes a zone of the system's database the process's local time zone until it is destroyed. No other thread
/// may ask for local times while it is made or destroyed.
class LocalTimeZone {
  public:
    explicit LocalTimeZone(const std::string& name);
    ~LocalTimeZone();
    LocalTimeZone(const LocalTimeZone&) = delete;
    LocalTimeZone& operator=(const LocalTimeZone&) = delete;

  private:
    std::optional<std::string> before_;
};

/// The local day of a date as YYYY-MM-DD and its time of day as HH:MM, seconds cut off; empty for what is no
/// date.
std::string shortDate(const Value& date);
std::string shortTime(const Value& date);

}  // namespace orvane::host
