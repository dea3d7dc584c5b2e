#pragma once

#include <map>
#include <optional>

#include "platform/accessibility.h"

namespace orvane {

/// A focused window as accessibility shows it.
struct SimulatedFocusedWindow {
    bool hasTitle = false;             ///< whether it has the attribute "AXTitle" at all
    std::optional<std::string> title;  ///< none: reading the attribute fails
};

/// Accessibility that is told what other applications show.
class ORVANE_EXPORT SimulatedAccessibility : public Accessibility {
  public:
    /// By process. The focused window of a process that is missing cannot be read.
    using FocusedWindows = std::map<std::int32_t, SimulatedFocusedWindow>;

    bool isProcessTrusted() override { return trusted_; }
    std::shared_ptr<AccessibilityElement> createApplication(std::int32_t processIdentifier) override;

    void setProcessTrusted(bool trusted) { trusted_ = trusted; }
    void setFocusedWindows(FocusedWindows windows) { focusedWindows_ = std::move(windows); }

  private:
    bool trusted_ = false;
    FocusedWindows focusedWindows_;
};

}  // namespace orvane
