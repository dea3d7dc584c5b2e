#include "platform/simulated/simulated_accessibility.h"

namespace orvane {

namespace {

constexpr int success = 0;
constexpr int unsupported = 1;
constexpr int unreadable = 2;

class WindowElement : public AccessibilityElement {
  public:
    explicit WindowElement(SimulatedFocusedWindow window) : window_(std::move(window)) {}

    int copyAttributeValue(std::string_view attribute, AccessibilityValue& value) override {
        if (attribute != kAXTitleAttribute || !window_.hasTitle) return unsupported;
        if (!window_.title) return unreadable;
        value = *window_.title;
        return success;
    }
    std::vector<std::string> copyAttributeNames() override {
        return window_.hasTitle ? std::vector<std::string>{kAXTitleAttribute} : std::vector<std::string>{};
    }

  private:
    SimulatedFocusedWindow window_;
};

class ApplicationElement : public AccessibilityElement {
  public:
    explicit ApplicationElement(std::optional<SimulatedFocusedWindow> window) : window_(std::move(window)) {}

    int copyAttributeValue(std::string_view attribute, AccessibilityValue& value) override {
        if (attribute != NSAccessibilityFocusedWindowAttribute) return unsupported;
        if (!window_) return unreadable;
        value = std::make_shared<WindowElement>(*window_);
        return success;
    }
    std::vector<std::string> copyAttributeNames() override { return {NSAccessibilityFocusedWindowAttribute}; }

  private:
    std::optional<SimulatedFocusedWindow> window_;
};

}  // namespace

std::shared_ptr<AccessibilityElement> SimulatedAccessibility::createApplication(
    std::int32_t processIdentifier) {
    const auto found = focusedWindows_.find(processIdentifier);
    return std::make_shared<ApplicationElement>(
        found == focusedWindows_.end() ? std::nullopt : std::optional(found->second));
}

}  // namespace orvane
