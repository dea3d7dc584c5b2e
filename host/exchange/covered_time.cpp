#include "host/exchange/covered_time.h"

#include <algorithm>

namespace orvane::host {

namespace {

bool endsBefore(const CoveredTime::Span& span, double moment) { return span.second <= moment; }

}  // namespace

void CoveredTime::add(double start, double end) {
    if (!(start < end)) return;
    // Spans that follow one another, as recordings mostly do, are one from the beginning.
    if (!spans_.empty() && spans_.back().first <= start && start <= spans_.back().second)
        spans_.back().second = std::max(spans_.back().second, end);
    else
        spans_.emplace_back(start, end);
}

void CoveredTime::settle() {
    std::sort(spans_.begin(), spans_.end());
    std::size_t kept = 0;
    for (std::size_t i = 1; i < spans_.size(); ++i) {
        if (spans_[i].first <= spans_[kept].second)
            spans_[kept].second = std::max(spans_[kept].second, spans_[i].second);
        else
            spans_[++kept] = spans_[i];
    }
    if (!spans_.empty()) spans_.resize(kept + 1);
}

std::vector<CoveredTime::Span> CoveredTime::uncovered(double start, double end) const {
    std::vector<Span> result;
    auto span = std::lower_bound(spans_.begin(), spans_.end(), start, endsBefore);
    for (; start < end && span != spans_.end() && span->first < end; ++span) {
        if (start < span->first) result.emplace_back(start, span->first);
        start = span->second;
    }
    if (start < end) result.emplace_back(start, end);
    return result;
}

bool CoveredTime::covers(double moment) const {
    const auto span = std::lower_bound(spans_.begin(), spans_.end(), moment, endsBefore);
    return span != spans_.end() && span->first <= moment;
}

}  // namespace orvane::host
