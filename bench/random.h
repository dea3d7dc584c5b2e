#pragma once

#include <cstdint>

#include "foundation/internal.h"

namespace orvane::bench {

/// A small generator of random numbers (splitmix64) that gives the same sequence everywhere, unlike the
/// standard library's distributions.
class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        std::uint64_t mixed = state_ += 0x9E3779B97F4A7C15;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EB;
        return mixed ^ (mixed >> 31);
    }
    /// At least 0 and less than 1.
    double unit() { return static_cast<double>(next() >> 11) * 0x1p-53; }
    double between(double low, double high) { return low + (high - low) * unit(); }
    std::uint64_t below(std::uint64_t limit) {
        return static_cast<std::uint64_t>(unit() * static_cast<double>(limit));
    }

  private:
    std::uint64_t state_;
};

}  // namespace orvane::bench
