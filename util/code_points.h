#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "foundation/internal.h"

namespace orvane {

inline constexpr char32_t replacementCharacter = 0xFFFD;

constexpr bool isHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool isLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
constexpr bool isSurrogate(char32_t codePoint) { return codePoint >= 0xD800 && codePoint <= 0xDFFF; }

/// The code point at the index, which must lie within the text, and moves the index behind it. An unpaired
/// surrogate is returned as it is.
constexpr char32_t takeCodePoint(std::u16string_view text, std::size_t& index) {
    const char16_t first = text[index++];
    if (!isHighSurrogate(first) || index == text.size() || !isLowSurrogate(text[index])) return first;
    const char16_t second = text[index++];
    return 0x10000 + ((char32_t{first} - 0xD800) << 10) + (char32_t{second} - 0xDC00);
}

/// Appends the code point, which may be an unpaired surrogate.
inline void appendCodePoint(std::u16string& text, char32_t codePoint) {
    if (codePoint < 0x10000) {
        text += static_cast<char16_t>(codePoint);
    } else {
        text += static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10));
        text += static_cast<char16_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF));
    }
}

}  // namespace orvane
