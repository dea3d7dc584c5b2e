#pragma once

#include <array>
#include <cstdint>

#include "foundation/export.h"

namespace orvane {

/// Makes fresh 16-byte UUIDs. Any thread.
class ORVANE_EXPORT UuidSource {
  public:
    virtual ~UuidSource() = default;

    virtual std::array<std::uint8_t, 16> next() = 0;
};

}  // namespace orvane
