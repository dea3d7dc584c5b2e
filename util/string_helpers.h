#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/export.h"

namespace orvane {

// Small operations on text. Lengths and positions count UTF-16 units, so a cut may divide a surrogate pair. A
// range error is std::out_of_range. Any thread.

/// Stands for a missing text in a list of texts.
struct Null {};

/// `count` blanks, then the text. A negative count is a range error.
ORVANE_EXPORT std::u16string addSpaces(std::u16string_view text, std::int64_t count);
/// Always empty.
ORVANE_EXPORT std::u16string addSpaces(Null placeholder, std::int64_t count);

/// All elements but the last; an empty array stays empty.
template <class T>
std::vector<T> arrayByDeletingLastObject(std::vector<T> array) {
    if (!array.empty()) array.pop_back();
    return array;
}

/// What stands before the last blank (U+0020 alone counts); empty when there is none. A blank at the end is
/// all that goes, and one of two in a row stays.
ORVANE_EXPORT std::u16string stringByDeletingLastWord(std::u16string_view text);

/// The decimal integer that the text starts with, after white space and with an optional sign, held within 32
/// bits; 0 when there is none. Digits are 0 to 9.
ORVANE_EXPORT std::int32_t numberValue(std::u16string_view text);

/// "qw/zx/qwe.rt/zxcv" for "Qwe.Rt@Zxcv": the first two units of the local part and of the domain, then both,
/// in lower case whatever the locale. A local part of one unit is its own prefix, a shorter domain has an
/// empty one; what follows a second "@" is dropped. Text without "@" is returned as it is. An empty local
/// part is a range error.
ORVANE_EXPORT std::u16string pathFromEmail(std::u16string_view address);

/// The first two units; empty for empty text. Text of one unit is a range error.
ORVANE_EXPORT std::u16string firstCharacter(std::u16string_view text);

/// Line feeds become blanks and double quotation marks double primes (U+2033), then white space and line
/// breaks go from both ends. Other line breaks inside stay.
ORVANE_EXPORT std::u16string singleLine(std::u16string_view text);

/// MD5 digest of the text's UTF-8 form up to its first zero, as 32 uppercase hexadecimal digits. An unpaired
/// surrogate counts as U+FFFD.
ORVANE_EXPORT std::u16string md5String(std::u16string_view text);

/// Text of more than `length` units becomes its first `length` - 1 units and an ellipsis (U+2026); other text
/// stays. A negative length never shortens; 0 is a range error unless the text is empty.
ORVANE_EXPORT std::u16string truncateToLength(std::u16string_view text, std::int64_t length);

}  // namespace orvane
