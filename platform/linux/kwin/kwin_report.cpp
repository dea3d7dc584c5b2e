#include "platform/linux/kwin/kwin_report.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>

namespace orvane {

namespace {

using Json = nlohmann::json;

std::string text(const Json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

/// 0 when it is missing or too large.
std::int32_t number(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_number()) return 0;
    const auto value = found->get<double>();
    const bool fits = value >= std::numeric_limits<std::int32_t>::min() &&
                      value <= std::numeric_limits<std::int32_t>::max();
    return fits ? static_cast<std::int32_t>(value) : 0;
}

KWinReport::Window describedWindow(const Json& object) {
    KWinReport::Window window;
    if (!object.is_object()) return window;
    window.identifier = text(object, "id");
    auto& description = window.description;
    description.processIdentifier = std::max(0, number(object, "process"));
    description.layer = number(object, "layer");
    if (auto title = text(object, "title"); !title.empty()) description.title = std::move(title);
    description.windowClass = text(object, "class");
    return window;
}

}  // namespace

std::optional<KWinReport> KWinReport::parse(const std::string& json) {
    const auto object = Json::parse(json, nullptr, false);
    if (!object.is_object()) return std::nullopt;
    const auto list = object.find("windows");
    if (list == object.end() || !list->is_array()) return std::nullopt;
    KWinReport report;
    report.active = text(object, "active");
    for (const auto& each : *list) {
        auto window = describedWindow(each);
        const bool isKnown =
            std::any_of(report.windows.begin(), report.windows.end(),
                        [&](const auto& other) { return other.identifier == window.identifier; });
        if (!window.identifier.empty() && !isKnown) report.windows.push_back(std::move(window));
    }
    return report;
}

}  // namespace orvane
