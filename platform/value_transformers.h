#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/value.h"

namespace orvane {

/// Named functions that the host registers to turn values into texts for display. Main thread only.
class ORVANE_EXPORT ValueTransformers {
  public:
    using Transformer = std::function<std::string(const Value&)>;

    /// Registers a transformer under a name, in place of the one registered before; none removes it.
    void setValueTransformer(Transformer transformer, std::string_view name);
    /// What the transformer of that name makes of the value; none when none is registered.
    std::optional<std::string> transformedValue(const Value& value, std::string_view name) const;

  private:
    std::map<std::string, Transformer, std::less<>> transformers_;
};

}  // namespace orvane
