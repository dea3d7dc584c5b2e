#pragma once

#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/error.h"
#include "foundation/keyed_object.h"

namespace orvane {

struct PredicateNode;

/// A predicate text that cannot be read. The message points at the place: the text, a caret line, what was
/// expected there.
class ORVANE_EXPORT PredicateSyntaxError : public std::invalid_argument {
  public:
    PredicateSyntaxError(std::string_view format, std::size_t position, std::string_view problem);

    /// Byte offset into the text.
    std::size_t position() const { return position_; }

  private:
    std::size_t position_;
};

/// A condition over the values of an object or dictionary.
///
///     startDate >= %@ AND startDate <= %@ AND idle == 0
///
/// Comparisons: `=` `==` `!=` `<>` `<` `<=` `=<` `>` `>=` `=>`, `BETWEEN`, `IN`, `CONTAINS`, `BEGINSWITH`,
/// `ENDSWITH`, `LIKE` (`?` one character, `*` any run; `\` takes the next one literally); the text ones and
/// `==`, `!=`, `IN` of texts take `[c]` (case), `[d]` (diacritics) or `[cd]` to ignore the difference. Joined
/// by `AND`/`&&`, `OR`/`||`, `NOT`/`!` and parentheses; `TRUEPREDICATE` and `FALSEPREDICATE` stand alone.
/// Words are read in either case. Operands: key paths, `SELF`, `%@` (a value), `%K` (a key path given as
/// text), quoted texts, numbers, `TRUE`/`YES`, `FALSE`/`NO`, `NULL`/`NIL`, lists in braces.
///
/// Meaning: an absent value equals only an absent value; every other comparison with an absent value is
/// false, and so is one between values of different classes (a text and a number). `!=` is exactly `NOT ==`,
/// and NOT turns false into true. Numbers compare by value whatever their type, booleans as 0 and 1; texts
/// byte by byte. A fetch answered by the database file gives the same answers.
class ORVANE_EXPORT Predicate {
  public:
    /// Reads a predicate written in code. Throws PredicateSyntaxError, also when the number of arguments is
    /// not that of the place holders or a `%K` argument is no text.
    static Predicate withFormat(std::string_view format, std::initializer_list<Value> arguments = {});
    static Predicate withFormat(std::string_view format, std::span<const Value> arguments);

    /// Reads a predicate that came from outside. None when it cannot be read; the error tells the place.
    static std::optional<Predicate> parse(std::string_view format, std::span<const Value> arguments,
                                          Error* error = nullptr);

    /// Whether the condition holds for an object or dictionary. Throws UnknownKeyError for an object without
    /// the key.
    bool evaluate(const Value& object) const;
    bool evaluate(const KeyedObject& object) const;

    /// The elements for which the condition holds, in their order.
    template <class Element>
    std::vector<Element> filter(const std::vector<Element>& elements) const {
        std::vector<Element> result;
        for (const Element& element : elements)
            if (evaluate(Value(element))) result.push_back(element);
        return result;
    }

    /// The predicate as text, place holders filled in.
    std::string description() const;

    /// For those who translate predicates into another language.
    const PredicateNode& root() const { return *root_; }

    explicit Predicate(std::shared_ptr<const PredicateNode> root) : root_(std::move(root)) {}

  private:
    std::shared_ptr<const PredicateNode> root_;
};

}  // namespace orvane
