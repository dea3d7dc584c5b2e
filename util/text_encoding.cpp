#include "util/text_encoding.h"

#include <cstddef>

#include "util/code_points.h"

namespace orvane {

namespace {

/// What a first byte says of its sequence. The bounds of the second byte (The Unicode Standard, table 3-7)
/// keep out overlong forms, surrogates and code points beyond U+10FFFF.
struct Lead {
    std::size_t following = 0;
    unsigned bits = 0;
    unsigned lowest = 0x80;
    unsigned highest = 0xBF;
};

/// No following bytes when the byte, which is not ASCII, starts no sequence.
Lead leadOf(unsigned byte) {
    if (byte >= 0xC2 && byte <= 0xDF) return {1, byte & 0x1FU};
    if (byte >= 0xE0 && byte <= 0xEF)
        return {2, byte & 0x0FU, byte == 0xE0 ? 0xA0U : 0x80U, byte == 0xED ? 0x9FU : 0xBFU};
    if (byte >= 0xF0 && byte <= 0xF4)
        return {3, byte & 0x07U, byte == 0xF0 ? 0x90U : 0x80U, byte == 0xF4 ? 0x8FU : 0xBFU};
    return {};
}

char32_t takeUtf8(std::string_view text, std::size_t& index) {
    const auto byteAt = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned first = byteAt(index++);
    if (first < 0x80) return first;
    Lead lead = leadOf(first);
    if (lead.following == 0) return replacementCharacter;
    char32_t codePoint = lead.bits;
    for (; lead.following > 0; --lead.following) {
        if (index == text.size() || byteAt(index) < lead.lowest || byteAt(index) > lead.highest)
            return replacementCharacter;
        codePoint = codePoint << 6 | (byteAt(index++) & 0x3FU);
        lead.lowest = 0x80;
        lead.highest = 0xBF;
    }
    return codePoint;
}

void appendUtf8(std::string& text, char32_t codePoint) {
    const auto append = [&text](char32_t byte) { text += static_cast<char>(byte); };
    const auto appendFollowing = [&](unsigned shift) { append(0x80 | (codePoint >> shift & 0x3F)); };
    if (codePoint < 0x80) {
        append(codePoint);
    } else if (codePoint < 0x800) {
        append(0xC0 | codePoint >> 6);
        appendFollowing(0);
    } else if (codePoint < 0x10000) {
        append(0xE0 | codePoint >> 12);
        appendFollowing(6);
        appendFollowing(0);
    } else {
        append(0xF0 | codePoint >> 18);
        appendFollowing(12);
        appendFollowing(6);
        appendFollowing(0);
    }
}

}  // namespace

std::u16string utf16(std::string_view text) {
    std::u16string result;
    result.reserve(text.size());
    for (std::size_t index = 0; index < text.size();) appendCodePoint(result, takeUtf8(text, index));
    return result;
}

std::string utf8(std::u16string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t index = 0; index < text.size();) {
        const char32_t codePoint = takeCodePoint(text, index);
        appendUtf8(result, isSurrogate(codePoint) ? replacementCharacter : codePoint);
    }
    return result;
}

}  // namespace orvane
