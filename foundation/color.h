#pragma once

namespace orvane {

/// A colour in calibrated RGB; components from 0 to 1.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 0;

    friend bool operator==(const Color&, const Color&) = default;
};

}  // namespace orvane
