#pragma once

#include <glib.h>

#include <memory>
#include <string>

#include "foundation/internal.h"

namespace orvane {

/// What a compositor sent as text, with all that is not UTF-8 replaced. Null gives an empty text.
inline std::string waylandText(const char* text) {
    if (text == nullptr) return {};
    const std::unique_ptr<char, decltype(&g_free)> valid(g_utf8_make_valid(text, -1), g_free);
    return valid.get();
}

}  // namespace orvane
