#include "platform/linux/gnome/gnome_picture.h"

#include <algorithm>
#include <limits>

#include "platform/linux/session/bus_connection.h"

namespace orvane {

namespace {

std::string text(GVariant* description, const char* key) {
    const char* found = nullptr;
    return g_variant_lookup(description, key, "&s", &found) != 0 ? found : "";
}

/// 0 when it is missing.
std::int32_t number(GVariant* description, const char* key) {
    gint32 found = 0;
    g_variant_lookup(description, key, "i", &found);
    return found;
}

DesktopWindow describedWindow(GVariant* description) {
    DesktopWindow window;
    guint64 windowNumber = 0;
    if (g_variant_lookup(description, "number", "t", &windowNumber) != 0 &&
        windowNumber <= static_cast<guint64>(std::numeric_limits<std::int64_t>::max())) {
        window.number = static_cast<std::int64_t>(windowNumber);
    }
    window.processIdentifier = std::max(0, number(description, "process"));
    window.layer = number(description, "layer");
    if (auto title = text(description, "title"); !title.empty()) window.title = std::move(title);
    window.windowClass = text(description, "class");
    window.windowInstance = text(description, "instance");
    window.gtkApplicationId = text(description, "gtk-application-id");
    return window;
}

}  // namespace

std::optional<GnomePicture> GnomePicture::parse(GVariant* values) {
    if (values == nullptr || !g_variant_is_of_type(values, G_VARIANT_TYPE("(taa{sv})"))) return std::nullopt;
    GnomePicture picture;
    guint64 active = 0;
    g_variant_get_child(values, 0, "t", &active);
    const Variant list(g_variant_get_child_value(values, 1));
    for (gsize i = 0; i < g_variant_n_children(list.get()); ++i) {
        const Variant description(g_variant_get_child_value(list.get(), i));
        auto window = describedWindow(description.get());
        const bool isKnown = std::any_of(picture.windows.begin(), picture.windows.end(),
                                         [&](const auto& other) { return other.number == window.number; });
        if (window.number == 0 || isKnown) continue;
        if (static_cast<guint64>(window.number) == active) picture.active = window;
        picture.windows.push_back(std::move(window));
    }
    return picture;
}

}  // namespace orvane
