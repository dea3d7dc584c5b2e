#pragma once

#include <mutex>
#include <random>

#include "platform/uuid_source.h"

namespace orvane {

/// Random UUIDs (RFC 4122, version 4) in a sequence that is the same whenever the seed is: two runs that
/// shall not share identifiers need seeds of their own. Any thread.
class ORVANE_EXPORT RepeatableUuidSource : public UuidSource {
  public:
    explicit RepeatableUuidSource(std::uint64_t seed = 0) : generator_(seed) {}

    std::array<std::uint8_t, 16> next() override;
    /// Begins the sequence of another seed.
    void setSeed(std::uint64_t seed);

  private:
    std::mutex mutex_;
    std::mt19937_64 generator_;
};

}  // namespace orvane
