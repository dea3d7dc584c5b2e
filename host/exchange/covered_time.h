#pragma once

#include <utility>
#include <vector>

namespace orvane::host {

/// Spans of time that are taken, each from its start up to, but not including, its end; in any unit.
class CoveredTime {
  public:
    using Span = std::pair<double, double>;

    /// Spans may overlap and come in any order; empty ones and those that end before they start are ignored.
    void add(double start, double end);
    /// Call after the last `add`, before asking.
    void settle();

    /// What of the span is not taken, in order; empty when all of it is.
    std::vector<Span> uncovered(double start, double end) const;
    bool covers(double moment) const;

  private:
    std::vector<Span> spans_;  // once settled: in order, apart from one another
};

}  // namespace orvane::host
