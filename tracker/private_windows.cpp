#include <glib.h>

#include <algorithm>
#include <array>

#include "foundation/predicate_node.h"
#include "tracker/title_rules.h"

namespace orvane {

namespace {

/// What browsers write at the end of a private window's title, as in "Page — Mozilla Firefox Private
/// Browsing", without marks and case.
constexpr std::array privatePhrases{
    "private browsing",  // English
    "privater modus",
    "privates fenster",  // German
    "navigation privee",
    "fenetre privee",  // French
    "navegacion privada",
    "navegacio privada",
    "ventana privada",  // Spanish, Catalan
    "navegacao privada",
    "navegacao privativa",  // Portuguese
    "navigazione anonima",
    "navigazione in incognito",  // Italian
    "privenavigatie",
    "privevenster",  // Dutch
    "privat browsing",
    "privat nettlesing",
    "privat surfning",    // Danish, Norwegian, Swedish
    "yksityinen selaus",  // Finnish
    "tryb prywatny",
    "anonymni prohlizeni",
    "sukromne prehliadanie",  // Polish, Czech, Slovak
    "privat bongeszes",
    "navigare privata",  // Hungarian, Romanian
    "приватныи просмотр",
    "приватный просмотр",  // Russian
    "приватне перегляд",
    "приватний перегляд",  // Ukrainian
    "ιδιωτικη περιηγηση",
    "gizli gezinti",  // Greek, Turkish
    "隐私浏览",
    "隱私瀏覽",
    "プライベートブラウジング",
    "사생활 보호 모드",  // Chinese, Japanese, Korean
};

/// What they write there in brackets, as in "Page - Chromium (Incognito)" or "Page - Opera (Private)". Such
/// words alone may well end a title of another kind.
constexpr std::array privateWords{
    "incognito",
    "private",
    "inprivate",
    "inkognito",
    "privat",
    "privado",
    "prive",
    "anonima",
    "anonimo",
    "in incognito",
    "prywatne",
    "anonymni",
    "anonymne",
    "incognit",
    "инкогнито",
    "режим инкогнито",
    "анонімний режим",
    "ανωνυμη περιηγηση",
    "gizli",
    "无痕模式",
    "無痕模式",
    "無痕式",
    "シークレット",
    "시크릿 모드",
    "navegacao anonima",
    "navegacion de incognito",
};

/// Written in brackets before the browser's own name.
constexpr std::array privateMarks{"[inprivate]", "(inprivate)"};

/// Whether a phrase may begin after these bytes: letters must not go on into it.
bool isWordBoundary(std::string_view before) {
    if (before.empty()) return true;
    const char* last = g_utf8_find_prev_char(before.data(), before.data() + before.size());
    return !last || !g_unichar_isalpha(g_utf8_get_char(last));
}

std::string folded(std::string_view text) { return foldedText(text, true, true); }

bool endsInPhrase(std::string_view title) {
    return std::ranges::any_of(privatePhrases, [&](std::string_view phrase) {
        const std::string ending = folded(phrase);
        return title.ends_with(ending) && isWordBoundary(title.substr(0, title.size() - ending.size()));
    });
}

}  // namespace

bool isPrivateWindowTitle(std::string_view title) {
    const std::string whole = folded(title);
    std::string_view text = whole;
    while (text.ends_with(' ')) text.remove_suffix(1);
    if (std::ranges::any_of(privateMarks,
                            [&](std::string_view mark) { return text.find(mark) != std::string_view::npos; }))
        return true;
    if (!text.ends_with(')') && !text.ends_with(']')) return endsInPhrase(text);
    text.remove_suffix(1);
    const std::size_t opening = text.find_last_of("([");
    return endsInPhrase(text) || (opening != std::string_view::npos &&
                                  std::ranges::any_of(privateWords, [&](std::string_view word) {
                                      return text.substr(opening + 1) == folded(word);
                                  }));
}

}  // namespace orvane
