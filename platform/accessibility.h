#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "foundation/export.h"

namespace orvane {

/// Attribute of an application's element: the element of its focused window.
inline constexpr const char* NSAccessibilityFocusedWindowAttribute = "AXFocusedWindow";
/// Attribute of a window's element: its title.
inline constexpr const char* kAXTitleAttribute = "AXTitle";

class AccessibilityElement;

/// An attribute's value: absent, a text or another element.
using AccessibilityValue = std::variant<std::monostate, std::string, std::shared_ptr<AccessibilityElement>>;

/// An application or window of another process as accessibility shows it.
class ORVANE_EXPORT AccessibilityElement {
  public:
    virtual ~AccessibilityElement() = default;

    /// Reads an attribute into `value`, which stays absent on failure. Returns 0 on success, another number
    /// when the attribute cannot be read.
    virtual int copyAttributeValue(std::string_view attribute, AccessibilityValue& value) = 0;
    /// The attributes that the element has.
    virtual std::vector<std::string> copyAttributeNames() = 0;
};

/// Access to other applications' elements. Main thread only; no call takes longer than a short deadline.
class ORVANE_EXPORT Accessibility {
  public:
    virtual ~Accessibility() = default;

    /// Whether this process may read other applications' attributes.
    virtual bool isProcessTrusted() = 0;
    /// The element of the application that the process is; never null.
    virtual std::shared_ptr<AccessibilityElement> createApplication(std::int32_t processIdentifier) = 0;
};

}  // namespace orvane
