#pragma once

#include <optional>
#include <string>
#include <vector>

#include "codegen/model_file.h"

namespace orvane::codegen {

/// Names of the member functions that a property is given, its getter first.
std::vector<std::string> accessorsOf(const Attribute& attribute);
std::vector<std::string> accessorsOf(const Relationship& relationship);

/// Why the entity's property names cannot become C++ members; none when they can.
std::optional<std::string> problemWithNames(const Entity& entity);

}  // namespace orvane::codegen
