#include "platform/linux/random_uuid_source.h"

#include <glib.h>
#include <sys/random.h>

namespace orvane {

std::array<std::uint8_t, 16> RandomUuidSource::next() {
    std::array<std::uint8_t, 16> bytes{};
    // Sixteen bytes always come in one piece. A sandbox may forbid the call; GLib's generator is then good
    // enough.
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        for (auto& byte : bytes) byte = static_cast<std::uint8_t>(g_random_int());
    }
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
    return bytes;
}

}  // namespace orvane
