#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/internal.h"
#include "foundation/value.h"

namespace orvane {

/// The words that predicates reserve; `between` and those behind it compare.
enum class PredicateWord {
    none,
    conjunction,
    disjunction,
    negation,
    always,
    never,
    self,
    yes,
    no,
    null,
    between,
    in,
    contains,
    beginsWith,
    endsWith,
    like
};

/// The reserved word that the text is, in either case.
PredicateWord predicateWordOf(std::string_view text);

/// End of the key or collection operator that begins at `position`; `position` itself when there is none.
std::size_t keyEnd(std::string_view text, std::size_t position);

/// Reads the pieces of a predicate's text one after the other.
class PredicateScanner {
  protected:
    explicit PredicateScanner(std::string_view format) : format_(format) {}

    [[noreturn]] void fail(std::string_view problem) const { failAt(position_, problem); }
    [[noreturn]] void failAt(std::size_t position, std::string_view problem) const;

    void skipSpace();

    /// The character at the position; NUL, which nothing begins with, at the end.
    char peek(std::size_t ahead = 0) const {
        return position_ + ahead < format_.size() ? format_[position_ + ahead] : '\0';
    }

    /// Moves behind the symbol, and the space before it, when it comes next.
    bool accept(std::string_view symbol);

    /// The reserved word that comes next; not a key that is spelt like one and leads to further keys. The
    /// position stays before it, `end` tells where it ends.
    PredicateWord nextWord(std::size_t& end);

    /// Whether a key path or a word comes next, a number, a text.
    bool atKey() const;
    bool atNumber() const;
    bool atText() const { return peek() == '"' || peek() == '\''; }

    Value number();
    std::string text();

    std::string_view format_;
    std::size_t position_ = 0;

  private:
    void escape(std::string& result);
    std::uint32_t escapedCodePoint();
    std::uint32_t escapedUnit();
};

}  // namespace orvane
