#include "platform/simulated/repeatable_uuid_source.h"

namespace orvane {

std::array<std::uint8_t, 16> RepeatableUuidSource::next() {
    const std::lock_guard lock(mutex_);
    std::array<std::uint8_t, 16> bytes;
    for (std::size_t half = 0; half < 16; half += 8) {
        std::uint64_t random = generator_();
        for (std::size_t i = 0; i < 8; ++i, random >>= 8)
            bytes[half + i] = static_cast<std::uint8_t>(random & 0xFF);
    }
    // RFC 4122, section 4.4: version 4 and the variant of that document.
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
    return bytes;
}

void RepeatableUuidSource::setSeed(std::uint64_t seed) {
    const std::lock_guard lock(mutex_);
    generator_.seed(seed);
}

}  // namespace orvane
