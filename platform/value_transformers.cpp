#include "platform/value_transformers.h"

namespace orvane {

void ValueTransformers::setValueTransformer(Transformer transformer, std::string_view name) {
    if (transformer)
        transformers_.insert_or_assign(std::string(name), std::move(transformer));
    else
        transformers_.erase(std::string(name));
}

std::optional<std::string> ValueTransformers::transformedValue(const Value& value,
                                                               std::string_view name) const {
    const auto found = transformers_.find(name);
    if (found == transformers_.end()) return std::nullopt;
    return found->second(value);
}

}  // namespace orvane
