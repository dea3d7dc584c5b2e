#pragma once

#include <span>
#include <string_view>

#include "foundation/internal.h"
#include "foundation/predicate_node.h"

namespace orvane {

/// Reads a predicate with its place holders filled in. Throws PredicateSyntaxError. Lists in braces whose
/// elements are all constants become one constant. Nesting is limited, so whoever walks the nodes may
/// recurse.
PredicateNode parsePredicate(std::string_view format, std::span<const Value> arguments);

/// Whether the text is made of keys and collection operators joined by full stops.
bool isKeyPath(std::string_view text);

/// Whether the parser would take the key path, written as it is, for something else.
bool keyPathNeedsSelf(std::string_view keyPath);

}  // namespace orvane
