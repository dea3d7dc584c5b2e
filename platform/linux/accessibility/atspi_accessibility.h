#pragma once

#include <memory>

#include "foundation/internal.h"
#include "platform/accessibility.h"
#include "platform/linux/accessibility/accessibility_bus.h"

namespace orvane {

class TitleReader;

/// Other applications as AT-SPI shows them: the focused window of an application and its title.
class AtspiAccessibility : public Accessibility {
  public:
    /// Adds itself to the bus.
    explicit AtspiAccessibility(AccessibilityBus& bus);
    ~AtspiAccessibility() override;
    AtspiAccessibility(const AtspiAccessibility&) = delete;
    AtspiAccessibility& operator=(const AtspiAccessibility&) = delete;

    /// Whether there is a bus to ask on.
    bool isProcessTrusted() override;
    /// An element that outlives this has no attributes any more.
    std::shared_ptr<AccessibilityElement> createApplication(std::int32_t processIdentifier) override;

  private:
    std::shared_ptr<TitleReader> reader_;
};

}  // namespace orvane
