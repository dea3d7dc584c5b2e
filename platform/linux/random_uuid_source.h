#pragma once

#include "foundation/internal.h"
#include "platform/uuid_source.h"

namespace orvane {

/// UUIDs of version 4 (random) as RFC 4122 lays them out. Any thread.
class RandomUuidSource : public UuidSource {
  public:
    std::array<std::uint8_t, 16> next() override;
};

}  // namespace orvane
