#include "util/character_set.h"

#include <algorithm>
#include <cstddef>

#include "util/code_points.h"

namespace orvane {

bool isWhiteSpaceOrNewline(char32_t codePoint) {
    return (codePoint >= 0x0009 && codePoint <= 0x000D) || codePoint == 0x0020 || codePoint == 0x0085 ||
           codePoint == 0x00A0 || codePoint == 0x1680 || (codePoint >= 0x2000 && codePoint <= 0x200A) ||
           codePoint == 0x2028 || codePoint == 0x2029 || codePoint == 0x202F || codePoint == 0x205F ||
           codePoint == 0x3000;
}

CharacterSet::CharacterSet(std::u16string_view characters) {
    for (std::size_t index = 0; index < characters.size();)
        members_.push_back(takeCodePoint(characters, index));
    std::sort(members_.begin(), members_.end());
}

bool CharacterSet::contains(char32_t codePoint) const {
    return std::binary_search(members_.begin(), members_.end(), codePoint);
}

}  // namespace orvane
