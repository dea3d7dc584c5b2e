#pragma once

#include "foundation/internal.h"
#include "platform/accessibility.h"

namespace orvane {

/// Accessibility of a desktop that offers none: never trusted, and its elements have no attributes.
class NoAccessibility : public Accessibility {
  public:
    bool isProcessTrusted() override;
    std::shared_ptr<AccessibilityElement> createApplication(std::int32_t processIdentifier) override;
};

}  // namespace orvane
