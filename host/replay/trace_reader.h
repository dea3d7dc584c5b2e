#pragma once

#include <cstddef>
#include <istream>
#include <string>
#include <variant>

#include "host/replay/trace_line.h"

namespace orvane::host {

/// What ended the reading: the number of the line and what is wrong with it, for people.
struct TraceFailure {
    std::size_t line = 0;
    std::string problem;
};

/// The trace ran to its end.
struct TraceEnd {};

/// Reads a trace line by line and checks each one as it is read, so that what stands before a bad line can be
/// run. Keys that stand twice in an object are refused as doubled, wherever they stand. Members of a window
/// and of "userInfo" are taken as they are, but that a window's member may not be null.
class TraceReader {
  public:
    /// The stream must outlive the reader.
    explicit TraceReader(std::istream& input) : input_(input) {}

    /// Reads the first line. Call once, before `next`.
    std::variant<TraceHeader, TraceFailure> header();
    /// Reads the next line that is not blank.
    std::variant<TraceLine, TraceEnd, TraceFailure> next();

    /// Number of the line that was read last, counted from 1.
    std::size_t lineNumber() const { return lineNumber_; }

  private:
    bool readLine(std::string& line);
    TraceFailure failure(std::string problem) const { return {lineNumber_, std::move(problem)}; }

    std::istream& input_;
    std::size_t lineNumber_ = 0;
    TraceTime last_{};
};

/// Whether the action makes sense before there is a tracker.
bool worksWithoutTracker(const TraceAction& action);

}  // namespace orvane::host
