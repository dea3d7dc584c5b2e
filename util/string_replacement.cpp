#include "util/string_replacement.h"

#include <cstddef>

#include "util/code_points.h"

namespace orvane {

std::u16string stringByReplacingOccurrencesOfCharactersInSetWithString(std::u16string_view text,
                                                                       const CharacterSet& set,
                                                                       std::u16string_view replacement) {
    std::u16string result;
    for (std::size_t index = 0; index < text.size();) {
        const std::size_t start = index;
        const bool replaced = set.contains(takeCodePoint(text, index));
        result += replaced ? replacement : text.substr(start, index - start);
    }
    return result;
}

std::u16string stringBySanitizingForFileName(std::u16string_view text, std::u16string_view replacement) {
    static const CharacterSet forbidden(u"/\\\r\n?%*|\"<>");
    return stringByReplacingOccurrencesOfCharactersInSetWithString(text, forbidden, replacement);
}

std::u16string stringBySanitizingForFileName(std::u16string_view text) {
    return stringBySanitizingForFileName(text, {});
}

}  // namespace orvane
