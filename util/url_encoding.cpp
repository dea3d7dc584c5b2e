#include "util/url_encoding.h"

#include <cstddef>

#include "util/code_points.h"
#include "util/text_encoding.h"

namespace orvane {

namespace {

/// Told without the C library's classification, which follows the locale.
bool isUnreserved(unsigned char byte) {
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') ||
           byte == '-' || byte == '.' || byte == '_' || byte == '~';
}

}  // namespace

std::optional<std::u16string> stringByURLEncoding(std::u16string_view text) {
    for (std::size_t index = 0; index < text.size();) {
        if (isSurrogate(takeCodePoint(text, index))) return std::nullopt;
    }
    constexpr std::u16string_view digits = u"0123456789ABCDEF";
    std::u16string result;
    for (const char character : utf8(text)) {
        const auto byte = static_cast<unsigned char>(character);
        if (isUnreserved(byte)) {
            result += static_cast<char16_t>(byte);
        } else {
            result += {u'%', digits[byte >> 4], digits[byte & 0x0F]};
        }
    }
    return result;
}

}  // namespace orvane
