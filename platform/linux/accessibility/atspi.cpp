#include "platform/linux/accessibility/atspi.h"

#include <limits>

namespace orvane::atspi {

namespace {

bool isOf(GVariant* values, const char* type) {
    return values != nullptr && g_variant_is_of_type(values, G_VARIANT_TYPE(type));
}

}  // namespace

Object registryRoot() { return {registryService, rootPath}; }

BusObject busItself() { return {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"}; }

GVariant* nameArguments() { return g_variant_new("(ss)", accessibleInterface, "Name"); }

std::optional<std::vector<Object>> objectsIn(GVariant* values) {
    if (!isOf(values, "(a(so))")) return std::nullopt;
    const Variant list(g_variant_get_child_value(values, 0));
    std::vector<Object> objects;
    for (gsize i = 0; i < g_variant_n_children(list.get()); ++i) {
        const char* service = nullptr;
        const char* path = nullptr;
        g_variant_get_child(list.get(), i, "(&s&o)", &service, &path);
        // Calls on what is no name of a bus would be errors of the program.
        if (g_dbus_is_name(service) != 0) objects.push_back({service, path});
    }
    return objects;
}

std::optional<std::int32_t> processIn(GVariant* values) {
    if (!isOf(values, "(u)")) return std::nullopt;
    guint32 process = 0;
    g_variant_get(values, "(u)", &process);
    if (process > static_cast<guint32>(std::numeric_limits<std::int32_t>::max())) return std::nullopt;
    return static_cast<std::int32_t>(process);
}

bool hasState(GVariant* values, State state) {
    if (!isOf(values, "(au)")) return false;
    constexpr unsigned bitsInWord = 32;
    const Variant words(g_variant_get_child_value(values, 0));
    const auto number = static_cast<unsigned>(state);
    if (number / bitsInWord >= g_variant_n_children(words.get())) return false;
    guint32 word = 0;
    g_variant_get_child(words.get(), number / bitsInWord, "u", &word);
    return ((word >> (number % bitsInWord)) & 1U) != 0;
}

std::uint32_t roleIn(GVariant* values) {
    guint32 role = 0;
    if (isOf(values, "(u)")) g_variant_get(values, "(u)", &role);
    return role;
}

std::optional<std::string> textIn(GVariant* values) {
    if (!isOf(values, "(v)")) return std::nullopt;
    GVariant* inner = nullptr;
    g_variant_get(values, "(v)", &inner);
    const Variant text(inner);
    if (!isOf(inner, "s")) return std::nullopt;
    return g_variant_get_string(inner, nullptr);
}

}  // namespace orvane::atspi
