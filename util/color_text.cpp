#include "util/color_text.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>

#include "util/character_set.h"
#include "util/text_encoding.h"

namespace orvane {

namespace {

constexpr std::size_t pairLength = 2;
constexpr std::size_t pairCount = 4;

std::optional<unsigned> hexDigit(char16_t unit) {
    if (unit >= u'0' && unit <= u'9') return unit - u'0';
    if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
    if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10;
    return std::nullopt;
}

/// Reads as a number scanner does: white space, then digits. Such scanners also allow a prefix "0x", but only
/// before a digit; a pair has no room for one, so "0x" is the digit 0 with something behind it, as strtoul
/// has it. A sign is no digit.
std::optional<unsigned> scanPair(std::u16string_view pair) {
    while (!pair.empty() && isWhiteSpaceOrNewline(pair.front())) pair.remove_prefix(1);
    std::optional<unsigned> value;
    for (const char16_t unit : pair) {
        const auto digit = hexDigit(unit);
        if (!digit) break;
        value = value.value_or(0) * 16 + *digit;
    }
    return value;
}

std::uint32_t writtenComponent(double component) {
    using Limits = std::numeric_limits<std::int32_t>;
    const double scaled = std::trunc(component * 255.0);
    if (std::isnan(scaled)) return 0;
    if (scaled <= Limits::min()) return static_cast<std::uint32_t>(Limits::min());
    if (scaled >= Limits::max()) return static_cast<std::uint32_t>(Limits::max());
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(scaled));
}

}  // namespace

std::optional<Color> createColorFromHexTripletsString(std::optional<std::string_view> text) {
    constexpr Color white{1.0, 1.0, 1.0, 1.0};
    if (!text) return white;
    const std::u16string units = utf16(*text);
    if (units.size() < pairCount * pairLength) return white;

    std::array<double, pairCount> components{};
    for (std::size_t index = 0; index < pairCount; ++index) {
        const auto value = scanPair(std::u16string_view(units).substr(index * pairLength, pairLength));
        if (!value) return std::nullopt;
        // Single precision rounds so that × 255 in double precision never falls below the value that was
        // read: what is cut off in writing is then always the same pair.
        components[index] = static_cast<float>(*value) / 255.0F;
    }
    return Color{components[0], components[1], components[2], components[3]};
}

std::string hexStringForColor(std::optional<Color> color) {
    const Color written = color.value_or(Color{});
    std::array<char, pairCount * 8 + 1> text{};
    std::snprintf(text.data(), text.size(), "%02x%02x%02x%02x", writtenComponent(written.red),
                  writtenComponent(written.green), writtenComponent(written.blue),
                  writtenComponent(written.alpha));
    return text.data();
}

}  // namespace orvane
