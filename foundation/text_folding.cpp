#include <glib.h>

#include <algorithm>
#include <memory>

#include "foundation/predicate_node.h"

namespace orvane {
namespace {

struct FreeText {
    void operator()(gchar* text) const { g_free(text); }
};
using OwnedText = std::unique_ptr<gchar, FreeText>;

/// Removes combining marks in place.
void dropMarks(gchar* text) {
    gchar* destination = text;
    for (const gchar* source = text; *source;) {
        const gchar* const next = g_utf8_next_char(source);
        if (!g_unichar_ismark(g_utf8_get_char(source))) destination = std::copy(source, next, destination);
        source = next;
    }
    *destination = '\0';
}

}  // namespace

std::string foldedText(std::string_view text, bool ignoreCase, bool ignoreDiacritics) {
    // ASCII has no marks and folds letter by letter. GLib reads up to a NUL, so a text with one goes the long
    // way, where it counts as invalid.
    if (std::all_of(text.begin(), text.end(), [](char c) { return c > 0; })) {
        std::string result(text);
        if (ignoreCase)
            for (char& c : result)
                if (c >= 'A' && c <= 'Z') c = static_cast<char>(c | 0x20);
        return result;
    }
    OwnedText folded(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
    folded.reset(g_utf8_normalize(folded.get(), -1, G_NORMALIZE_DEFAULT));
    // Marks go before the case does: folding turns the mark U+0345 into a letter.
    if (ignoreDiacritics) dropMarks(folded.get());
    if (ignoreCase) folded.reset(g_utf8_casefold(folded.get(), -1));
    // Composed, so that `?` stands for what people take for one character.
    folded.reset(g_utf8_normalize(folded.get(), -1, G_NORMALIZE_DEFAULT_COMPOSE));
    return folded.get();
}

}  // namespace orvane
