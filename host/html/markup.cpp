#include "host/html/markup.h"

#include <glib.h>

#include <cmath>
#include <cstdio>

#include "host/terminal.h"

namespace orvane::host {

namespace {

std::string escaped(char character) {
    switch (character) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&#39;";
        default:
            return {character};
    }
}

}  // namespace

Markup& Markup::text(std::string_view text) {
    constexpr std::size_t longest = 300;  // characters: nobody reads more in a title
    char* const valid = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
    for (const char character : displayText(valid, longest)) content_ += escaped(character);
    g_free(valid);
    return *this;
}

Markup& Markup::attribute(std::string_view name, std::string_view value) {
    return html(" ").html(name).html("=\"").text(value).html("\"");
}

Markup& Markup::duration(DecimalSeconds duration, std::string_view shown) {
    return html("<data").attribute("value", decimalText(duration)).html(">").text(shown).html("</data>");
}

Markup& Markup::percent(double share) {
    char text[48];
    std::snprintf(text, sizeof text, "%.3f", std::isfinite(share) ? share * 100 : 0.0);
    std::string_view shown = text;
    while (shown.ends_with('0')) shown.remove_suffix(1);
    if (shown.ends_with('.')) shown.remove_suffix(1);
    return html(shown).html("%");
}

}  // namespace orvane::host
