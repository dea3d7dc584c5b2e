#include "util/dominant_color.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace orvane {

namespace {

constexpr std::size_t channels = 4;
constexpr double dullest = 0.6;

double brightness(const Color& color) { return std::max({color.red, color.green, color.blue}); }

/// Saturation as in HSB. The colour must not be black.
double saturation(const Color& color) {
    const double largest = brightness(color);
    return (largest - std::min({color.red, color.green, color.blue})) / largest;
}

bool isCandidate(const Color& color) {
    return color.alpha == 1.0 && brightness(color) > dullest && color.red != color.blue &&
           color.red != color.green;
}

Color colorOf(const std::uint8_t* pixel) {
    return {pixel[0] / 255.0, pixel[1] / 255.0, pixel[2] / 255.0, pixel[3] / 255.0};
}

}  // namespace

std::optional<Color> dominantColor(const Image& image) {
    if (image.width <= 0 || image.height <= 0) return std::nullopt;
    const auto width = static_cast<std::size_t>(image.width);
    const auto height = static_cast<std::size_t>(image.height);
    if (image.pixels.size() / channels / width < height) return std::nullopt;

    std::optional<Color> best;
    double bestSaturation = 0;
    for (std::size_t x = 0; x < width; ++x) {
        for (std::size_t y = 0; y < height; ++y) {
            const Color color = colorOf(image.pixels.data() + (y * width + x) * channels);
            // Strictly greater keeps the first of equals, as a stable sort would.
            if (!isCandidate(color) || (best && saturation(color) <= bestSaturation)) continue;
            best = color;
            bestSaturation = saturation(color);
        }
    }
    return best;
}

}  // namespace orvane
