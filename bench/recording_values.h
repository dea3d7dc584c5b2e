#pragma once

#include <cstdint>
#include <stdexcept>
#include <string_view>

#include "foundation/internal.h"

namespace orvane::bench {

/// What is computed from the values of many recordings, so that the reading cannot be left out, and so that
/// both sides can be seen to have read the same.
struct RecordingValues {
    std::size_t count = 0;
    std::size_t titleBytes = 0;
    std::size_t idle = 0;
    double seconds = 0;

    void add(double start, double end, bool isIdle, std::string_view title) {
        ++count;
        titleBytes += title.size();
        if (!title.empty()) titleBytes += static_cast<unsigned char>(title.back());
        idle += isIdle;
        seconds += end - start;
    }

    friend bool operator==(const RecordingValues&, const RecordingValues&) = default;
};

/// Throws std::runtime_error when the two sides did not do the same work.
template <class Result>
void requireSame(const Result& raw, const Result& ours) {
    if (!(raw == ours)) throw std::runtime_error("the raw loop and the library read different values");
}

}  // namespace orvane::bench
