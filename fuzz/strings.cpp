// Helpers for text, on any UTF-16, and the reading of UTF-8.

#include <cstring>
#include <stdexcept>

#include "fuzz/common.h"
#include "util/character_set.h"
#include "util/string_helpers.h"
#include "util/string_replacement.h"
#include "util/text_encoding.h"
#include "util/url_encoding.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    const std::string_view bytes = fuzz::textOf(data, size);
    const std::u16string decoded = utf16(bytes);
    fuzz::demand(utf16(utf8(decoded)) == decoded, "valid text survives both encodings");

    std::u16string text(size / 2, u'\0');
    if (!text.empty()) std::memcpy(text.data(), data, text.size() * 2);
    fuzz::demand(utf8(utf16(utf8(text))) == utf8(text), "text is valid once it was read");
    stringByDeletingLastWord(text);
    numberValue(text);
    fuzz::demand(md5String(text).size() == 32, "a digest has 32 digits");
    const std::u16string line = singleLine(text);
    fuzz::demand(line.find(u'\n') == line.npos && line.find(u'"') == line.npos,
                 "a single line has no line feed and no double quotation mark");
    fuzz::demand(stringBySanitizingForFileName(text).find_first_of(u"/\\?%*|\"<>\r\n") == text.npos,
                 "a file name has none of the characters that are forbidden");
    stringByReplacingOccurrencesOfCharactersInSetWithString(text, CharacterSet(decoded), decoded);
    if (const auto encoded = stringByURLEncoding(text))
        for (const char16_t unit : *encoded) fuzz::demand(unit < 0x80, "an encoded URL is ASCII");
    const std::int64_t length = size > 0 ? data[0] : 0;
    try {
        fuzz::demand(addSpaces(text, length).size() == text.size() + static_cast<std::size_t>(length),
                     "blanks are added");
        if (length > 0)
            fuzz::demand(truncateToLength(text, length).size() <= static_cast<std::size_t>(length),
                         "text is cut");
        pathFromEmail(text);
        firstCharacter(text);
    } catch (const std::out_of_range&) {
        // Too short for what was asked, as they say.
    }
    return 0;
}
