#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

#include "util/color_text.h"
#include "util/dominant_color.h"

namespace orvane {
namespace {

constexpr Color white{1, 1, 1, 1};

double part(int value) { return static_cast<float>(value) / 255.0F; }

TEST(ColorText, reads) {
    const Color red{1, 0, 0, 1};
    const struct {
        std::optional<std::string_view> text;
        std::optional<Color> color;
    } cases[] = {
        {std::nullopt, white},
        {"", white},
        {"ff0000", white},
        {"zz00000", white},
        {"ff0000ff", red},
        {"FF0000fF", red},
        {"ff0000ffzz#", red},
        {"#ff0000ff", std::nullopt},
        {"zz0000ff", std::nullopt},
        {"ff00  ff", std::nullopt},
        {"ff0000-1", std::nullopt},
        {"1g2h3i4j", Color{part(1), part(2), part(3), part(4)}},
        {" f\n1\t2\xC2\xA0\x33", Color{part(15), part(1), part(2), part(3)}},
        {"0x0Xff0x", Color{0, 0, 1, 0}},
        {std::string_view("000000f\0", 8), Color{0, 0, 0, part(15)}},
        // Lengths and cuts in UTF-16 units: a surrogate pair counts two and can be cut.
        {"ff00f\xF0\x9F\x98\x80", white},
        {"ff0000f\xF0\x9F\x98\x80", Color{1, 0, 0, part(15)}},
        {"ff00f\xF0\x9F\x98\x80\x66", std::nullopt},
        // Ill-formed bytes are one character for each sequence that was begun.
        {"ff0000f\xE2\x82", Color{1, 0, 0, part(15)}},
        {"ff0000\xE2\x82", white},
        {"ff0000\xFF\xFF", std::nullopt},
    };
    for (const auto& each : cases)
        EXPECT_EQ(createColorFromHexTripletsString(each.text), each.color) << each.text.value_or("none");
}

TEST(ColorText, writes) {
    const double infinity = std::numeric_limits<double>::infinity();
    const struct {
        std::optional<Color> color;
        const char* text;
    } cases[] = {
        {std::nullopt, "00000000"},
        {Color{0.5, 0.5, 0.5, 1}, "7f7f7fff"},
        {Color{0.999, 0, 0.0039, 1.0}, "fe0000ff"},
        {Color{2, 1, -0.003, -1}, "1feff00ffffff01"},
        {Color{std::nan(""), infinity, -infinity, 1e300}, "007fffffff800000007fffffff"},
        {Color{-1e300, 8421504.5, 8421505, -8421505}, "800000007fffffff7fffffff80000000"},
    };
    for (const auto& each : cases) EXPECT_EQ(hexStringForColor(each.color), each.text);
}

TEST(ColorText, everyPairSurvivesReadingAndWriting) {
    for (int value = 0; value < 256; ++value) {
        char text[16];
        std::snprintf(text, sizeof text, "%02x%02x%02X%02X", value, 255 - value, value, 255 - value);
        char lower[16];
        std::snprintf(lower, sizeof lower, "%02x%02x%02x%02x", value, 255 - value, value, 255 - value);
        EXPECT_EQ(hexStringForColor(createColorFromHexTripletsString(text)), lower);
    }
}

TEST(ColorText, anyBytesReadAsComponentsOrNone) {
    std::mt19937 random(7);
    const std::string_view alphabet("09afAFxX g#-\n\0\xC2\xA0\xE2\x80\xED\xF0\x9F\x98\xFF", 23);
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % 14, ' ');
        for (char& byte : text) byte = alphabet[random() % alphabet.size()];
        const auto color = createColorFromHexTripletsString(text);
        if (!color) continue;
        for (const double component : {color->red, color->green, color->blue, color->alpha})
            ASSERT_TRUE(component >= 0 && component <= 1) << text;
        ASSERT_EQ(createColorFromHexTripletsString(hexStringForColor(color)), color) << text;
    }
}

struct Pixel {
    std::uint8_t red, green, blue, alpha = 255;
};

/// One column of pixels on top of one another unless a width is given.
Image image(std::initializer_list<Pixel> pixels, int width = 1) {
    Image result{width, static_cast<int>(pixels.size()) / width, {}};
    for (const Pixel& pixel : pixels)
        result.pixels.insert(result.pixels.end(), {pixel.red, pixel.green, pixel.blue, pixel.alpha});
    return result;
}

Color color(const Pixel& pixel) {
    return {pixel.red / 255.0, pixel.green / 255.0, pixel.blue / 255.0, pixel.alpha / 255.0};
}

TEST(DominantColor, leavesOutWhatIsTranslucentDarkOrEqualInRed) {
    const Pixel excluded[] = {
        {0, 0, 0},     {255, 255, 255},   {200, 200, 200}, {0, 255, 0},  {0, 0, 255}, {255, 255, 0},
        {255, 0, 255}, {255, 0, 51, 254}, {255, 0, 51, 0}, {153, 0, 51},  // brightness exactly 0.6
        {0, 153, 153},
    };
    for (const Pixel& pixel : excluded)
        EXPECT_FALSE(dominantColor(image({pixel}))) << hexStringForColor(color(pixel));
    for (const Pixel& pixel : {Pixel{154, 0, 51}, Pixel{0, 255, 255}, Pixel{255, 0, 0}, Pixel{254, 255, 255}})
        EXPECT_EQ(dominantColor(image({pixel})), color(pixel)) << hexStringForColor(color(pixel));
}

TEST(DominantColor, isTheMostSaturatedAndAmongEqualsTheFirstColumnByColumn) {
    const Pixel strong{255, 0, 51};
    const Pixel weak{255, 128, 102};
    const Pixel grey{128, 128, 128};
    EXPECT_EQ(dominantColor(image({strong, weak, grey})), color(strong));
    EXPECT_EQ(dominantColor(image({grey, weak, strong})), color(strong));
    const Pixel upperRight{200, 0, 10};
    const Pixel lowerLeft{0, 210, 220};
    EXPECT_EQ(dominantColor(image({grey, upperRight, lowerLeft, strong}, 2)), color(lowerLeft));
}

TEST(DominantColor, anImageWithoutItsPixelsHasNone) {
    EXPECT_FALSE(dominantColor({}));
    const Image whole = image({{255, 0, 51}});
    for (const auto& [width, height] : {std::pair{0, 1}, {1, 0}, {-1, -1}, {1, 2}, {INT_MAX, INT_MAX}})
        EXPECT_FALSE(dominantColor({width, height, whole.pixels})) << width << " x " << height;
    EXPECT_FALSE(dominantColor({1, 1, {255, 0, 51}}));
}

}  // namespace
}  // namespace orvane
