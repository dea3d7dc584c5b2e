#pragma once

#include <string_view>
#include <vector>

#include "foundation/export.h"

namespace orvane {

/// Blanks, tabs and line breaks: Unicode's separators (general category Z) and the controls U+0009 to U+000D
/// and U+0085.
ORVANE_EXPORT bool isWhiteSpaceOrNewline(char32_t codePoint);

/// A fixed set of characters, told apart by code point. A surrogate pair is one character, an unpaired
/// surrogate one of its own.
class ORVANE_EXPORT CharacterSet {
  public:
    CharacterSet() = default;
    /// The characters that occur in the text.
    explicit CharacterSet(std::u16string_view characters);

    bool contains(char32_t codePoint) const;

  private:
    std::vector<char32_t> members_;  ///< ascending
};

}  // namespace orvane
