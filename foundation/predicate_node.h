#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/internal.h"
#include "foundation/predicate.h"

namespace orvane {

/// One side of a comparison.
struct PredicateOperand {
    enum class Kind { constant, keyPath, self, list };

    Kind kind = Kind::constant;
    Value constant;                      ///< of `constant`; a list given as an argument is a constant too
    std::string keyPath;                 ///< of `keyPath`
    std::vector<PredicateOperand> list;  ///< of `list`, a list written in braces
};

enum class ComparisonOperator {
    equal,
    notEqual,
    less,
    lessOrEqual,
    greater,
    greaterOrEqual,
    between,
    in,
    contains,
    beginsWith,
    endsWith,
    like,
};

/// A node of a predicate: a constant truth, a comparison, or a junction of further nodes (`negation` has
/// one).
struct PredicateNode {
    enum class Kind { always, never, comparison, conjunction, disjunction, negation };

    Kind kind = Kind::always;
    ComparisonOperator comparison = ComparisonOperator::equal;
    bool ignoreCase = false;
    bool ignoreDiacritics = false;
    PredicateOperand left;
    PredicateOperand right;
    std::vector<PredicateNode> children;
};

/// Evaluates one comparison between two values that were already looked up. Memory and database share it.
ORVANE_EXPORT bool compareValues(ComparisonOperator comparison, bool ignoreCase, bool ignoreDiacritics,
                                 const Value& left, const Value& right);

/// Evaluates a text operator, an equality or an order between two texts that were folded already where the
/// comparison asks for that.
ORVANE_EXPORT bool compareTexts(ComparisonOperator comparison, std::string_view left, std::string_view right);

/// The text as it takes part in a comparison that ignores case or diacritics: Unicode case folding and
/// decomposition without combining marks; bytes that are no UTF-8 count as U+FFFD.
ORVANE_EXPORT std::string foldedText(std::string_view text, bool ignoreCase, bool ignoreDiacritics);

}  // namespace orvane
