#include "platform/linux/accessibility/atspi_accessibility.h"

#include <utility>

#include "platform/linux/accessibility/title_reader.h"

namespace orvane {

namespace {

constexpr int kSuccess = 0;
constexpr int kCannotComplete = -1;

/// A window with what was read of it.
class WindowElement : public AccessibilityElement {
  public:
    explicit WindowElement(std::optional<std::string> title) : title_(std::move(title)) {}

    int copyAttributeValue(std::string_view attribute, AccessibilityValue& value) override {
        value = std::monostate{};
        if (attribute != kAXTitleAttribute || !title_) return kCannotComplete;
        value = *title_;
        return kSuccess;
    }
    std::vector<std::string> copyAttributeNames() override {
        return title_ ? std::vector<std::string>{kAXTitleAttribute} : std::vector<std::string>();
    }

  private:
    const std::optional<std::string> title_;
};

class ApplicationElement : public AccessibilityElement {
  public:
    ApplicationElement(std::shared_ptr<TitleReader> reader, std::int32_t process)
        : reader_(std::move(reader)), process_(process) {}

    int copyAttributeValue(std::string_view attribute, AccessibilityValue& value) override {
        value = std::monostate{};
        if (attribute != NSAccessibilityFocusedWindowAttribute) return kCannotComplete;
        // The title is asked for too, within the same deadline.
        auto window = reader_->focusedWindow(process_);
        if (!window) return kCannotComplete;
        value = std::make_shared<WindowElement>(std::move(window->title));
        return kSuccess;
    }
    std::vector<std::string> copyAttributeNames() override { return {NSAccessibilityFocusedWindowAttribute}; }

  private:
    const std::shared_ptr<TitleReader> reader_;
    const std::int32_t process_;
};

}  // namespace

AtspiAccessibility::AtspiAccessibility(AccessibilityBus& bus) : reader_(std::make_shared<TitleReader>()) {
    bus.add(*reader_);
}

AtspiAccessibility::~AtspiAccessibility() { reader_->busClosed(); }

bool AtspiAccessibility::isProcessTrusted() { return reader_->isOpen(); }

std::shared_ptr<AccessibilityElement> AtspiAccessibility::createApplication(std::int32_t processIdentifier) {
    return std::make_shared<ApplicationElement>(reader_, processIdentifier);
}

}  // namespace orvane
