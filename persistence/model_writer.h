#pragma once

#include <string>

#include "foundation/internal.h"
#include "persistence/model.h"

namespace orvane {

/// The model in the form that `ModelReader` reads, on one line; members that hold their usual value are left
/// out.
std::string modelText(const ManagedObjectModel& model);

/// Name of the type in model files.
const char* nameOfType(AttributeType type);

}  // namespace orvane
