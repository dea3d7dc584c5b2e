#pragma once

#include <string>
#include <string_view>

#include "foundation/internal.h"

namespace orvane {

/// How the bytes of a text property are to be read; told by the property's type.
enum class X11TextEncoding {
    utf8,
    /// STRING: ISO 8859-1.
    latin1,
    /// COMPOUND_TEXT: segments in several character sets, switched by escape sequences.
    compound,
    /// Any other type: UTF-8 where the bytes are that, else ISO 8859-1.
    unknown
};

/// The first of the texts a property holds (they are separated by zeros), as valid UTF-8. What cannot be read
/// becomes replacement characters.
std::string decodeX11Text(std::string_view bytes, X11TextEncoding encoding);

}  // namespace orvane
