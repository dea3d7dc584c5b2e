#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "trials/long_use.h"
#include "trials/process_figures.h"

namespace orvane::trials {

/// Long use in one process: every total must be right, and after the first week neither memory nor open files
/// may grow.
class Soak {
  public:
    /// Most bytes that memory may differ from that after the first week: what lies about unreleased changes a
    /// little from day to day.
    static constexpr std::int64_t memoryTolerance = 128 * 1024;

    /// The folder must be empty and stay until the end.
    Soak(const std::filesystem::path& folder, std::uint64_t seed);

    /// One more day. False once something was wrong.
    bool day();

    const LongUse& use() const { return use_; }
    const std::optional<std::string>& problem() const { return problem_; }
    const ProcessFigures& afterFirstWeek() const { return first_; }
    const ProcessFigures& now() const { return now_; }

  private:
    Desk desk_;
    LongUse use_;
    ProcessFigures first_;
    ProcessFigures now_;
    std::optional<std::string> problem_;
};

}  // namespace orvane::trials
