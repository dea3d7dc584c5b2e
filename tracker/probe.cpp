#include "tracker/orvane.h"

namespace orvane {

namespace {

/// The title that accessibility gives for the application's focused window: none when the window cannot be
/// read, an empty value when its title cannot.
std::optional<Value> focusedWindowTitle(Accessibility& accessibility, std::int32_t processIdentifier) {
    const auto application = accessibility.createApplication(processIdentifier);
    AccessibilityValue focused;
    if (application->copyAttributeValue(NSAccessibilityFocusedWindowAttribute, focused) != 0)
        return std::nullopt;
    const auto* window = std::get_if<std::shared_ptr<AccessibilityElement>>(&focused);
    if (!window || !*window) return std::nullopt;
    for (const std::string& name : (*window)->copyAttributeNames()) {
        if (name != kAXTitleAttribute) continue;
        AccessibilityValue title;
        (*window)->copyAttributeValue(kAXTitleAttribute, title);
        const auto* text = std::get_if<std::string>(&title);
        return text ? Value(*text) : Value();
    }
    return Value("");
}

bool isEmptyText(const Value& value) {
    const std::string* text = value.asString();
    return value.isNone() || (text && text->empty());
}

}  // namespace

std::optional<RunningApplication> Orvane::frontmostApplication() const {
    return platform_.workspace().frontmostApplication();
}

std::optional<Dictionary> Orvane::currentWindow() const {
    const RunningApplication application = frontmostApplication().value_or(RunningApplication{});

    WindowServer& windowServer = platform_.windowServer();
    const std::vector<WindowIdentifier> identifiers = windowServer.windowListCreate(
        kCGWindowListOptionOnScreenOnly | kCGWindowListExcludeDesktopElements, kCGNullWindowID);
    const std::vector<Dictionary> windows = windowServer.windowListCreateDescriptionFromArray(identifiers);
    const Predicate isNormalWindowOfApplication = Predicate::withFormat(
        "kCGWindowOwnerPID == %@ AND kCGWindowLayer == %@", {Value(application.processIdentifier), Value(0)});
    const std::vector<Dictionary> candidates = isNormalWindowOfApplication.filter(windows);
    if (candidates.empty()) return std::nullopt;

    Dictionary window = candidates.front();
    window.set(kCGWindowOwnerBundleIdentifier, application.bundleIdentifier);

    Accessibility& accessibility = platform_.accessibility();
    if (accessibility.isProcessTrusted() && isEmptyText(window[kCGWindowName]))
        if (const auto title = focusedWindowTitle(accessibility, application.processIdentifier))
            window.set(kCGWindowName, *title);

    if (const Value name = window[kCGWindowName]; const std::string* title = name.asString())
        for (const TitleRules* rules : {&hostTitleRules_, &userTitleRules_})
            if (const std::string identifier = application.bundleIdentifier.value_or("");
                rules->ruleHiding(identifier, *title)) {
                window.set(kCGWindowName, rules->recordedTitle(identifier, *title));
                break;
            }
    return window;
}

}  // namespace orvane
