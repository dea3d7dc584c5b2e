#include "host/exchange/exchange_text.h"

#include <glib.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <memory>

namespace orvane::host {

namespace {

constexpr std::string_view base64Mark = "base64:";
constexpr std::string_view infinityText = "Infinity";

std::string base64(std::string_view bytes) {
    const std::unique_ptr<gchar, decltype(&g_free)> text(
        g_base64_encode(reinterpret_cast<const guchar*>(bytes.data()), bytes.size()), &g_free);
    return text.get();
}

}  // namespace

bool isUtf8(std::string_view text) {
    // GLib takes no zero bytes, so the text is looked at piece by piece.
    while (true) {
        const std::size_t end = std::min(text.find('\0'), text.size());
        if (!g_utf8_validate_len(text.data(), end, nullptr)) return false;
        if (end == text.size()) return true;
        text.remove_prefix(end + 1);
    }
}

std::string exchangeText(std::string_view text) {
    if (isUtf8(text) && !text.starts_with(base64Mark)) return std::string(text);
    return std::string(base64Mark) + base64(text);
}

std::optional<std::string> textFromExchange(std::string_view text) {
    if (!text.starts_with(base64Mark)) return std::string(text);
    const std::string encoded(text.substr(base64Mark.size()));
    gsize length = 0;
    const std::unique_ptr<guchar, decltype(&g_free)> bytes(g_base64_decode(encoded.c_str(), &length),
                                                           &g_free);
    std::string result(reinterpret_cast<const char*>(bytes.get()), length);
    // GLib passes over what is no base64; encoding again tells.
    if (base64(result) != encoded) return std::nullopt;
    return result;
}

std::string numberText(double number) {
    if (std::isinf(number)) return (number < 0 ? "-" : "") + std::string(infinityText);
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

std::optional<double> numberFromText(std::string_view text) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    if (text == infinityText) return infinity;
    if (text.starts_with('-') && text.substr(1) == infinityText) return -infinity;
    double number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (failure != std::errc() || end != text.data() + text.size() || !std::isfinite(number))
        return std::nullopt;
    return number;
}

}  // namespace orvane::host
