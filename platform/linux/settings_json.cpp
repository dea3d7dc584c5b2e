#include "platform/linux/settings_json.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "foundation/json_value.h"

namespace orvane {

namespace {

using Json = nlohmann::ordered_json;

/// Far beyond any real setting, and shallow enough for every walk over the values.
constexpr int deepestNesting = 64;

/// None when JSON cannot hold the value.
std::optional<Json> jsonOf(const Value& value) {
    if (value.isNone()) return Json(nullptr);
    if (const auto* boolean = value.asBool()) return Json(*boolean);
    if (const auto* integer = value.asInteger()) return Json(*integer);
    if (value.isNumber()) {
        const double number = value.doubleValue();
        return std::isfinite(number) ? std::optional(Json(number)) : std::nullopt;
    }
    if (const auto* text = value.asString()) return Json(*text);
    if (const auto* elements = value.asArray()) {
        Json array = Json::array();
        for (const auto& element : *elements) {
            auto json = jsonOf(element);
            if (!json) return std::nullopt;
            array.push_back(std::move(*json));
        }
        return array;
    }
    if (const auto* dictionary = value.asDictionary()) {
        Json object = Json::object();
        for (const auto& [key, element] : *dictionary) {
            auto json = jsonOf(element);
            if (!json) return std::nullopt;
            object[key] = std::move(*json);
        }
        return object;
    }
    return std::nullopt;
}

}  // namespace

struct SettingsDocument::Content {
    Json json = Json::object();
};

SettingsDocument::SettingsDocument() : content_(std::make_unique<Content>()) {}
SettingsDocument::~SettingsDocument() = default;
SettingsDocument::SettingsDocument(SettingsDocument&&) noexcept = default;
SettingsDocument& SettingsDocument::operator=(SettingsDocument&&) noexcept = default;

std::optional<SettingsDocument> SettingsDocument::parse(std::string_view text, std::string& problem) {
    SettingsDocument document;
    bool isTooDeep = false;
    const auto limitDepth = [&](int depth, Json::parse_event_t, Json&) {
        if (depth > deepestNesting) isTooDeep = true;
        return !isTooDeep;
    };
    try {
        document.content_->json = Json::parse(text.begin(), text.end(), limitDepth);
    } catch (const Json::parse_error& error) {
        const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(error.byte, text.size()));
        problem =
            "it is not valid JSON (line " + std::to_string(1 + std::count(text.begin(), end, '\n')) + ")";
        return std::nullopt;
    } catch (const Json::exception&) {
        problem = "a number in it is too large";
        return std::nullopt;
    }
    if (isTooDeep || !document.content_->json.is_object()) {
        problem = isTooDeep ? "it is nested too deeply" : "it is not a JSON object";
        return std::nullopt;
    }
    return document;
}

Dictionary SettingsDocument::values() const {
    const Value all = valueFromJson(content_->json);
    return *all.asDictionary();
}

bool SettingsDocument::set(std::string_view key, const Value& value) {
    const std::string name(key);
    if (value.isNone()) {
        content_->json.erase(name);
        return true;
    }
    auto json = jsonOf(value);
    if (!json) return false;
    content_->json[name] = std::move(*json);
    return true;
}

std::string SettingsDocument::text() const {
    constexpr int indentation = 4;
    return content_->json.dump(indentation, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace orvane
