#include "platform/linux/no_accessibility.h"

namespace orvane {

namespace {

class EmptyElement : public AccessibilityElement {
  public:
    int copyAttributeValue(std::string_view, AccessibilityValue& value) override {
        value = std::monostate{};
        return -1;
    }
    std::vector<std::string> copyAttributeNames() override { return {}; }
};

}  // namespace

bool NoAccessibility::isProcessTrusted() { return false; }

std::shared_ptr<AccessibilityElement> NoAccessibility::createApplication(std::int32_t) {
    return std::make_shared<EmptyElement>();
}

}  // namespace orvane
