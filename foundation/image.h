#pragma once

#include <cstdint>
#include <vector>

namespace orvane {

/// A bitmap of 8 bits a channel: red, green, blue, alpha, not premultiplied, row by row from the top left. An
/// image that could not be read has no pixels.
struct Image {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;
};

}  // namespace orvane
