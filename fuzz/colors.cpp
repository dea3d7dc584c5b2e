// Texts of colours: what is read is written and read again as the same.

#include "fuzz/common.h"
#include "util/color_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    const auto color = createColorFromHexTripletsString(fuzz::textOf(data, size));
    const std::string text = hexStringForColor(color);
    fuzz::demand(text.size() == 8, "a colour that was read has two digits a component");
    if (color) {
        // The stored form cuts off, so it settles after one turn at the latest.
        const auto again = createColorFromHexTripletsString(text);
        fuzz::demand(again.has_value(), "a colour's own text can be read");
        fuzz::demand(hexStringForColor(createColorFromHexTripletsString(hexStringForColor(again))) ==
                         hexStringForColor(again),
                     "a colour's own text stays");
    }
    return 0;
}
