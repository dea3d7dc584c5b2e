#include "platform/linux/sway/sway_message.h"

#include <cstring>

namespace orvane {

namespace {

// Six letters, then the payload's length and the type in the machine's own byte order: sway-ipc(7).
constexpr std::string_view kMagic = "i3-ipc";
constexpr std::size_t kHeaderSize = kMagic.size() + 2 * sizeof(std::uint32_t);
// A tree of a thousand windows has about two megabytes.
constexpr std::uint32_t kLongestPayload = 64U * 1024 * 1024;

std::uint32_t numberAt(std::string_view bytes, std::size_t position) {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes.data() + position, sizeof number);
    return number;
}

void appendNumber(std::string& bytes, std::uint32_t number) {
    char raw[sizeof number];
    std::memcpy(raw, &number, sizeof number);
    bytes.append(raw, sizeof raw);
}

}  // namespace

std::string SwayMessage::bytes() const {
    std::string result(kMagic);
    appendNumber(result, static_cast<std::uint32_t>(payload.size()));
    appendNumber(result, static_cast<std::uint32_t>(type));
    return result + payload;
}

std::optional<SwayMessage> SwayMessageReader::next() {
    const auto begin = std::string_view(pending_).substr(0, kMagic.size());
    if (isBroken_ || begin != kMagic.substr(0, begin.size())) {
        isBroken_ = true;
        pending_.clear();
        return std::nullopt;
    }
    if (pending_.size() < kHeaderSize) return std::nullopt;
    const auto length = numberAt(pending_, kMagic.size());
    if (length > kLongestPayload) {
        isBroken_ = true;
        pending_.clear();
        return std::nullopt;
    }
    if (pending_.size() - kHeaderSize < length) return std::nullopt;
    SwayMessage message{SwayMessageType(numberAt(pending_, kMagic.size() + sizeof length)),
                        pending_.substr(kHeaderSize, length)};
    pending_.erase(0, kHeaderSize + length);
    return message;
}

}  // namespace orvane
