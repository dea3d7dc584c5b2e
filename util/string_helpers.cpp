#include "util/string_helpers.h"

#include <glib.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <stdexcept>

#include "util/character_set.h"
#include "util/code_points.h"
#include "util/text_encoding.h"

namespace orvane {

namespace {

constexpr std::size_t prefixLength = 2;

/// Lower case by Unicode's default mapping. GLib's own operation on whole texts follows the locale, which
/// would give one address two paths; its mapping of single characters leaves out the two cases told apart
/// here (SpecialCasing.txt).
std::u16string lowerCased(std::u16string_view text) {
    std::u16string result;
    bool afterLetter = false;
    for (std::size_t index = 0; index < text.size();) {
        const char32_t codePoint = takeCodePoint(text, index);
        if (codePoint == 0x0130) {  // capital I with dot above: two characters
            result += u"i\u0307";
        } else if (codePoint == 0x03A3) {  // capital sigma: final form at the end of a word
            std::size_t next = index;
            const bool beforeLetter = index < text.size() && g_unichar_isalpha(takeCodePoint(text, next));
            result += afterLetter && !beforeLetter ? u'\u03C2' : u'\u03C3';
        } else {
            appendCodePoint(result, g_unichar_tolower(codePoint));
        }
        afterLetter = g_unichar_isalpha(codePoint);
    }
    return result;
}

std::u16string_view trimmed(std::u16string_view text) {
    while (!text.empty() && isWhiteSpaceOrNewline(text.front())) text.remove_prefix(1);
    while (!text.empty() && isWhiteSpaceOrNewline(text.back())) text.remove_suffix(1);
    return text;
}

}  // namespace

std::u16string addSpaces(std::u16string_view text, std::int64_t count) {
    if (count < 0) throw std::out_of_range("addSpaces: negative count");
    std::u16string result(static_cast<std::size_t>(count), u' ');
    return result.append(text);
}

std::u16string addSpaces(Null, std::int64_t) { return {}; }

std::u16string stringByDeletingLastWord(std::u16string_view text) {
    const std::size_t blank = text.rfind(u' ');
    return std::u16string(text.substr(0, blank == std::u16string_view::npos ? 0 : blank));
}

std::int32_t numberValue(std::u16string_view text) {
    using Limits = std::numeric_limits<std::int32_t>;
    text = trimmed(text);
    const bool negative = text.starts_with(u'-');
    if (negative || text.starts_with(u'+')) text.remove_prefix(1);
    std::int64_t value = 0;
    for (const char16_t unit : text) {
        if (unit < u'0' || unit > u'9') break;
        // One beyond the largest: the smallest one's magnitude.
        value = std::min<std::int64_t>(value * 10 + (unit - u'0'), std::int64_t{Limits::max()} + 1);
    }
    return static_cast<std::int32_t>(negative ? -value : std::min<std::int64_t>(value, Limits::max()));
}

std::u16string pathFromEmail(std::u16string_view address) {
    const std::u16string lower = lowerCased(address);
    const std::size_t at = lower.find(u'@');
    if (at == std::u16string::npos) return std::u16string(address);
    const std::u16string local = lower.substr(0, at);
    const std::u16string domain = lower.substr(at + 1, lower.find(u'@', at + 1) - (at + 1));
    if (local.empty()) throw std::out_of_range("pathFromEmail: nothing before the at sign");
    const std::u16string domainPrefix = domain.size() < prefixLength ? u"" : domain.substr(0, prefixLength);
    return local.substr(0, prefixLength) + u'/' + domainPrefix + u'/' + local + u'/' + domain;
}

std::u16string firstCharacter(std::u16string_view text) {
    if (text.size() == 1) throw std::out_of_range("firstCharacter: text of one unit");
    return std::u16string(text.substr(0, prefixLength));
}

std::u16string singleLine(std::u16string_view text) {
    std::u16string result(text);
    std::replace(result.begin(), result.end(), u'\n', u' ');
    std::replace(result.begin(), result.end(), u'"', u'\u2033');
    return std::u16string(trimmed(result));
}

std::u16string md5String(std::u16string_view text) {
    const std::string bytes = utf8(text.substr(0, text.find(u'\0')));
    const std::unique_ptr<gchar, decltype(&g_free)> digest(
        g_compute_checksum_for_string(G_CHECKSUM_MD5, bytes.c_str(), static_cast<gssize>(bytes.size())),
        &g_free);
    std::u16string result = utf16(digest.get());
    std::transform(result.begin(), result.end(), result.begin(), [](char16_t unit) {
        return static_cast<char16_t>(unit >= u'a' ? unit - u'a' + u'A' : unit);
    });
    return result;
}

std::u16string truncateToLength(std::u16string_view text, std::int64_t length) {
    // A negative length counts as the huge unsigned number of the same bits.
    const auto limit = static_cast<std::uint64_t>(length);
    if (text.size() <= limit) return std::u16string(text);
    if (limit == 0) throw std::out_of_range("truncateToLength: no room for the ellipsis");
    return std::u16string(text.substr(0, limit - 1)) + u'\u2026';
}

}  // namespace orvane
