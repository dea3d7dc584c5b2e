#include "foundation/predicate_scanner.h"

#include <algorithm>
#include <charconv>

#include "foundation/predicate.h"

namespace orvane {
namespace {

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
/// Letters beyond ASCII may stand in keys; which ones is not this parser's concern.
constexpr bool startsName(char c) { return isLetter(c) || c == '_' || static_cast<unsigned char>(c) >= 0x80; }
constexpr bool continuesName(char c) { return startsName(c) || isDigit(c); }
constexpr bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

struct Spelling {
    std::string_view text;
    PredicateWord word;
};

constexpr Spelling spellings[] = {
    {"AND", PredicateWord::conjunction},
    {"OR", PredicateWord::disjunction},
    {"NOT", PredicateWord::negation},
    {"IN", PredicateWord::in},
    {"CONTAINS", PredicateWord::contains},
    {"BETWEEN", PredicateWord::between},
    {"BEGINSWITH", PredicateWord::beginsWith},
    {"ENDSWITH", PredicateWord::endsWith},
    {"LIKE", PredicateWord::like},
    {"TRUE", PredicateWord::yes},
    {"YES", PredicateWord::yes},
    {"FALSE", PredicateWord::no},
    {"NO", PredicateWord::no},
    {"NULL", PredicateWord::null},
    {"NIL", PredicateWord::null},
    {"SELF", PredicateWord::self},
    {"TRUEPREDICATE", PredicateWord::always},
    {"FALSEPREDICATE", PredicateWord::never},
};

bool equalsWord(std::string_view text, std::string_view upperCase) {
    return text.size() == upperCase.size() &&
           std::equal(text.begin(), text.end(), upperCase.begin(),
                      [](char c, char upper) { return c == upper || (isLetter(c) && (c & ~0x20) == upper); });
}

void appendCodePoint(std::string& text, std::uint32_t code) {
    const auto byte = [&](std::uint32_t value) { text.push_back(static_cast<char>(value)); };
    if (code < 0x80) {
        byte(code);
    } else if (code < 0x800) {
        byte(0xC0 | code >> 6);
        byte(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        byte(0xE0 | code >> 12);
        byte(0x80 | (code >> 6 & 0x3F));
        byte(0x80 | (code & 0x3F));
    } else {
        byte(0xF0 | code >> 18);
        byte(0x80 | (code >> 12 & 0x3F));
        byte(0x80 | (code >> 6 & 0x3F));
        byte(0x80 | (code & 0x3F));
    }
}

}  // namespace

PredicateWord predicateWordOf(std::string_view text) {
    for (const Spelling& spelling : spellings)
        if (equalsWord(text, spelling.text)) return spelling.word;
    return PredicateWord::none;
}

std::size_t keyEnd(std::string_view text, std::size_t position) {
    std::size_t end = position;
    if (end < text.size() && text[end] == '@') ++end;
    if (end == text.size() || !startsName(text[end])) return position;
    while (end < text.size() && continuesName(text[end])) ++end;
    return end;
}

void PredicateScanner::failAt(std::size_t position, std::string_view problem) const {
    throw PredicateSyntaxError(format_, position, problem);
}

void PredicateScanner::skipSpace() {
    while (position_ < format_.size() && isSpace(format_[position_])) ++position_;
}

bool PredicateScanner::accept(std::string_view symbol) {
    skipSpace();
    if (!format_.substr(position_).starts_with(symbol)) return false;
    position_ += symbol.size();
    return true;
}

PredicateWord PredicateScanner::nextWord(std::size_t& end) {
    skipSpace();
    if (!isLetter(peek())) return PredicateWord::none;
    end = keyEnd(format_, position_);
    if (end < format_.size() && format_[end] == '.') return PredicateWord::none;
    return predicateWordOf(format_.substr(position_, end - position_));
}

bool PredicateScanner::atKey() const { return startsName(peek()) || peek() == '@'; }

bool PredicateScanner::atNumber() const {
    const char c = peek();
    return isDigit(c) || c == '-' || c == '+' || c == '.';
}

Value PredicateScanner::number() {
    const char* const start = format_.data() + position_;
    std::size_t end = position_;
    const auto digits = [&] {
        const std::size_t from = end;
        while (end < format_.size() && isDigit(format_[end])) ++end;
        return end > from;
    };
    const auto at = [&](std::size_t place) { return place < format_.size() ? format_[place] : '\0'; };
    if (at(end) == '-' || at(end) == '+') ++end;
    bool isNumber = digits();
    bool isInteger = true;
    if (at(end) == '.') {
        ++end;
        isInteger = false;
        isNumber = digits() || isNumber;
    }
    if (isNumber && (at(end) | 0x20) == 'e') {
        ++end;
        isInteger = false;
        if (at(end) == '-' || at(end) == '+') ++end;
        isNumber = digits();
    }
    if (!isNumber || continuesName(at(end)) || at(end) == '.') fail("expected a decimal number");
    const char* const first = *start == '+' ? start + 1 : start;  // from_chars knows no plus sign
    const char* const last = format_.data() + end;
    std::int64_t integer = 0;
    if (isInteger && std::from_chars(first, last, integer).ec == std::errc()) {
        position_ = end;
        return Value(integer);
    }
    double real = 0;
    if (std::from_chars(first, last, real).ec != std::errc())
        fail("expected a number within the range of a double");
    position_ = end;
    return Value(real);
}

std::string PredicateScanner::text() {
    const std::size_t opening = position_;
    const char quote = format_[position_++];
    std::string result;
    while (true) {
        const std::size_t from = position_;
        while (position_ < format_.size() && format_[position_] != quote && format_[position_] != '\\')
            ++position_;
        result.append(format_, from, position_ - from);
        if (position_ == format_.size()) failAt(opening, "expected a closing quotation mark");
        if (format_[position_] == quote) break;
        escape(result);
    }
    ++position_;
    return result;
}

void PredicateScanner::escape(std::string& result) {
    switch (peek(1)) {
        case 'n':
            result.push_back('\n');
            break;
        case 't':
            result.push_back('\t');
            break;
        case '\\':
        case '\'':
        case '"':
            result.push_back(peek(1));
            break;
        case 'u':
            appendCodePoint(result, escapedCodePoint());
            return;
        default:
            fail("expected an escape: one of \\n \\t \\\\ \\' \\\" \\uXXXX");
    }
    position_ += 2;
}

std::uint32_t PredicateScanner::escapedCodePoint() {
    const std::size_t place = position_;
    const std::uint32_t unit = escapedUnit();
    if (unit < 0xD800 || unit > 0xDFFF) return unit;
    // Beyond the first 65536 code points two UTF-16 units stand for one.
    if (unit <= 0xDBFF && peek() == '\\' && peek(1) == 'u') {
        const std::uint32_t low = escapedUnit();
        if (low >= 0xDC00 && low <= 0xDFFF) return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
    }
    failAt(place, "expected a code point, not half of a surrogate pair");
}

std::uint32_t PredicateScanner::escapedUnit() {
    const char* const first = format_.data() + position_ + 2;
    std::uint32_t unit = 0;
    if (format_.size() - position_ < 6 || std::from_chars(first, first + 4, unit, 16).ptr != first + 4)
        fail("expected four hexadecimal digits after \\u");
    position_ += 6;
    return unit;
}

}  // namespace orvane
