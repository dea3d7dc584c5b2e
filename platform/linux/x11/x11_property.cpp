#include "platform/linux/x11/x11_property.h"

#include <cstring>

namespace orvane {

std::string_view X11Property::bytes() const {
    if (reply_ == nullptr || reply_->format != 8) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply_.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply_.get()))};
}

std::vector<std::uint32_t> X11Property::words() const {
    if (reply_ == nullptr || reply_->format != 32) return {};
    std::vector<std::uint32_t> result(static_cast<std::size_t>(xcb_get_property_value_length(reply_.get())) /
                                      sizeof(std::uint32_t));
    if (!result.empty()) {
        std::memcpy(result.data(), xcb_get_property_value(reply_.get()),
                    result.size() * sizeof(std::uint32_t));
    }
    return result;
}

std::uint32_t X11Property::firstWord(std::uint32_t fallback) const {
    const auto all = words();
    return all.empty() ? fallback : all.front();
}

}  // namespace orvane
