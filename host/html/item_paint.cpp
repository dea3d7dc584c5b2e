#include "host/html/item_paint.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace orvane::host {

namespace {

// Relative luminance and contrast ratio as the Web Content Accessibility Guidelines 2.2 define them; they ask
// for 3 between a graphic and what lies beside it.
constexpr double leastContrast = 3;
constexpr double lightPage = 1;
constexpr double darkPage = 0.009;  // luminance of the dark page's background

struct Rgb {
    double red;
    double green;
    double blue;

    /// The colour a part of the way to black (0) or white (1).
    Rgb towards(double end, double part) const {
        return {red + (end - red) * part, green + (end - green) * part, blue + (end - blue) * part};
    }
};

double linear(double component) {
    return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

double contrast(const Rgb& color, double page) {
    const double luminance =
        0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
    return (std::max(luminance, page) + 0.05) / (std::min(luminance, page) + 0.05);
}

std::string hexText(const Rgb& color) {
    char text[32];
    const auto byte = [](double component) { return static_cast<unsigned>(std::lround(component * 255)); };
    std::snprintf(text, sizeof text, "#%02x%02x%02x", byte(color.red), byte(color.green), byte(color.blue));
    return text;
}

/// The nearest shade on the way to an end that stands out from the page.
Rgb rimOf(const Rgb& color, double end, double page) {
    Rgb rim = color;
    for (int percent = 0; percent <= 100 && contrast(rim, page) < leastContrast; percent += 5)
        rim = color.towards(end, percent / 100.0);
    return rim;
}

}  // namespace

ItemPaint paintOf(const RangeItem& item) {
    const auto stored = item.color() ? item.colorValue() : std::nullopt;
    // An application whose icon shows nothing is stored with a colour that shows nothing.
    if (!stored || stored->alpha <= 0) return {"--c:var(--plain)", ""};
    const Rgb color{std::clamp(stored->red, 0.0, 1.0), std::clamp(stored->green, 0.0, 1.0),
                    std::clamp(stored->blue, 0.0, 1.0)};
    const std::string style = "--c:" + hexText(color);
    if (contrast(color, lightPage) < leastContrast)
        return {style + ";--rim:" + hexText(rimOf(color, 0, lightPage)), "pale"};
    if (contrast(color, darkPage) < leastContrast)
        return {style + ";--rim:" + hexText(rimOf(color, 1, darkPage)), "deep"};
    return {style, ""};
}

std::string shownName(const RangeItem& item) {
    for (const auto& text : {item.name(), item.identifier()})
        if (text && !text->empty()) return *text;
    return "(no name)";
}

}  // namespace orvane::host
