#include "platform/linux/kwin/kwin_picture.h"

#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

namespace orvane {

namespace {

using Json = nlohmann::json;

const Json* member(const Json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() ? &*found : nullptr;
}

std::string text(const Json& object, const char* key) {
    const auto* value = member(object, key);
    return value != nullptr && value->is_string() ? value->get<std::string>() : std::string();
}

std::int32_t number(const Json& object, const char* key) {
    const auto* value = member(object, key);
    // JavaScript knows only one kind of number.
    const double result = value != nullptr && value->is_number() ? value->get<double>() : 0;
    const bool fits = result >= std::numeric_limits<std::int32_t>::min() &&
                      result <= std::numeric_limits<std::int32_t>::max();
    return fits ? static_cast<std::int32_t>(result) : 0;
}

bool isTrue(const Json& object, const char* key) {
    const auto* value = member(object, key);
    return value != nullptr && value->is_boolean() && value->get<bool>();
}

}  // namespace

std::optional<KwinPicture> KwinPictureReader::read(std::string_view report) {
    const Json list = Json::parse(report, nullptr, false);
    if (!list.is_array()) return std::nullopt;
    KwinPicture picture;
    std::map<std::string, std::int64_t> numbers;
    for (const Json& each : list) {
        if (!each.is_object()) continue;
        const std::string identifier = text(each, "id");
        if (identifier.empty() || numbers.contains(identifier)) continue;
        const auto known = numbers_.find(identifier);
        DesktopWindow window;
        window.number = known != numbers_.end() ? known->second : ++lastNumber_;
        numbers.emplace(identifier, window.number);
        window.processIdentifier = std::max(number(each, "pid"), 0);
        window.layer = number(each, "layer");
        window.windowClass = text(each, "class");
        if (auto title = text(each, "title"); !title.empty()) window.title = std::move(title);
        if (isTrue(each, "active")) picture.active = window;
        if (isTrue(each, "shown")) picture.windows.push_back(std::move(window));
    }
    numbers_ = std::move(numbers);
    return picture;
}

}  // namespace orvane
