#include "foundation/error.h"

namespace orvane {

std::string Error::localizedDescription() const {
    const auto text = userInfo_.find(NSLocalizedDescriptionKey);
    return text == userInfo_.end() ? domain_ + " " + std::to_string(code_) : text->second;
}

std::string Error::localizedFailureReason() const {
    const auto text = userInfo_.find(NSLocalizedFailureReasonErrorKey);
    return text == userInfo_.end() ? std::string() : text->second;
}

}  // namespace orvane
