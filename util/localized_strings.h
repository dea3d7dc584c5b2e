#pragma once

#include <map>
#include <string>
#include <string_view>

#include "foundation/export.h"

namespace orvane {

/// The host's translations, text by text.
using LocalizedStrings = std::map<std::u16string, std::u16string, std::less<>>;

/// Installs the host's translations for the whole process in place of those before. Any thread.
ORVANE_EXPORT void setLocalizedStrings(LocalizedStrings strings);

/// The host's translation of the text; the text itself when there is none. Any thread.
ORVANE_EXPORT std::u16string localizedString(std::u16string_view text);

}  // namespace orvane
