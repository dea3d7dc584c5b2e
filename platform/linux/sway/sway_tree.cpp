#include "platform/linux/sway/sway_tree.h"

#include <glib.h>

#include <limits>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

namespace orvane {

namespace {

using Json = nlohmann::json;

// Containers in containers; people have a handful.
constexpr int kDeepest = 100;

/// Discarded when it is no JSON.
Json parsed(std::string_view json) {
    if (json.empty()) return Json(Json::value_t::discarded);  // has perhaps no place in memory to read from
    // Titles are passed on as programs set them; one that is not UTF-8 must not spoil all the rest.
    const std::unique_ptr<char, decltype(&g_free)> valid(
        g_utf8_make_valid(json.data(), static_cast<gssize>(json.size())), g_free);
    return Json::parse(std::string_view(valid.get()), nullptr, false);
}

const Json* member(const Json& object, const char* key) {
    const auto found = object.is_object() ? object.find(key) : object.end();
    return object.is_object() && found != object.end() ? &*found : nullptr;
}

std::string text(const Json& object, const char* key) {
    const auto* value = member(object, key);
    return value != nullptr && value->is_string() ? value->get<std::string>() : std::string();
}

bool isTrue(const Json& object, const char* key) {
    const auto* value = member(object, key);
    return value != nullptr && value->is_boolean() && value->get<bool>();
}

std::int64_t number(const Json& object, const char* key) {
    const auto* value = member(object, key);
    if (value == nullptr || !value->is_number_integer()) return 0;
    return value->get<std::int64_t>();
}

/// The one that had the focus last comes first.
std::vector<const Json*> childrenOf(const Json& node) {
    std::map<std::int64_t, std::size_t> places;
    if (const auto* order = member(node, "focus"); order != nullptr && order->is_array()) {
        for (const auto& identifier : *order) {
            if (identifier.is_number_integer()) places.emplace(identifier.get<std::int64_t>(), places.size());
        }
    }
    std::multimap<std::size_t, const Json*> children;
    for (const char* key : {"floating_nodes", "nodes"}) {
        const auto* list = member(node, key);
        if (list == nullptr || !list->is_array()) continue;
        for (const auto& child : *list) {
            const auto place = places.find(number(child, "id"));
            children.emplace(place != places.end() ? place->second : places.size(), &child);
        }
    }
    std::vector<const Json*> result;
    for (const auto& [place, child] : children) result.push_back(child);
    return result;
}

/// None for what is no window: outputs, workspaces and containers have no process.
std::optional<DesktopWindow> windowOf(const Json& node) {
    const auto identifier = number(node, "id");
    const auto process = number(node, "pid");
    if (identifier == 0 || process <= 0 || process > std::numeric_limits<std::int32_t>::max()) {
        return std::nullopt;
    }
    DesktopWindow window;
    window.number = identifier;
    window.processIdentifier = static_cast<std::int32_t>(process);
    if (auto title = text(node, "name"); !title.empty()) window.title = std::move(title);
    window.windowClass = text(node, "app_id");
    // A window of an X11 program.
    if (const auto* properties = member(node, "window_properties")) {
        window.windowClass = text(*properties, "class");
        window.windowInstance = text(*properties, "instance");
    }
    return window;
}

void collect(const Json& node, int depth, SwayTree& tree) {
    if (depth > kDeepest || !node.is_object()) return;
    const auto children = childrenOf(node);
    auto window = children.empty() ? windowOf(node) : std::nullopt;
    if (window && isTrue(node, "visible")) {
        if (isTrue(node, "focused") && !tree.focused) tree.focused = *window;
        tree.windows.push_back(std::move(*window));
    }
    for (const auto* child : children) collect(*child, depth + 1, tree);
}

}  // namespace

std::optional<SwayTree> SwayTree::parse(std::string_view json) {
    const auto root = parsed(json);
    if (!root.is_object() || text(root, "type") != "root") return std::nullopt;
    SwayTree tree;
    collect(root, 0, tree);
    return tree;
}

bool isSwayFocusEvent(std::string_view json) { return text(parsed(json), "change") == "focus"; }

bool canChangeSwayFocus(std::string_view json) {
    const auto change = text(parsed(json), "change");
    static const std::set<std::string> kHarmless{"title", "mark", "urgent", "rename", "reload"};
    return !kHarmless.contains(change);
}

}  // namespace orvane
