#include "platform/linux/session/reply_values.h"

#include "platform/linux/session/variant.h"

namespace orvane {

namespace {

bool isOf(GVariant* values, const char* type) {
    return values != nullptr && g_variant_is_of_type(values, G_VARIANT_TYPE(type));
}

}  // namespace

std::optional<bool> booleanIn(GVariant* values) {
    if (!isOf(values, "(b)")) return std::nullopt;
    gboolean result = FALSE;
    g_variant_get(values, "(b)", &result);
    return result != FALSE;
}

std::optional<bool> booleanPropertyIn(GVariant* values) {
    if (!isOf(values, "(v)")) return std::nullopt;
    GVariant* inner = nullptr;
    g_variant_get(values, "(v)", &inner);
    const Variant owner(inner);
    if (!g_variant_is_of_type(inner, G_VARIANT_TYPE_BOOLEAN)) return std::nullopt;
    return g_variant_get_boolean(inner) != FALSE;
}

std::optional<bool> changedBooleanIn(GVariant* values, const char* property) {
    if (!isOf(values, "(sa{sv}as)")) return std::nullopt;
    const Variant changed(g_variant_get_child_value(values, 1));
    gboolean result = FALSE;
    if (g_variant_lookup(changed.get(), property, "b", &result) == FALSE) return std::nullopt;
    return result != FALSE;
}

std::string objectPathIn(GVariant* values) {
    if (!isOf(values, "(o)")) return {};
    const char* path = nullptr;
    g_variant_get(values, "(&o)", &path);
    return path;
}

std::optional<std::int32_t> descriptorIndexIn(GVariant* values) {
    if (!isOf(values, "(h)")) return std::nullopt;
    gint32 index = -1;
    g_variant_get(values, "(h)", &index);
    return index;
}

std::string removedSessionIn(GVariant* values) {
    if (!isOf(values, "(so)")) return {};
    const char* path = nullptr;
    g_variant_get(values, "(&s&o)", nullptr, &path);
    return path;
}

std::string sessionOfUser(GVariant* values, std::uint32_t user) {
    if (!isOf(values, "(a(susso))")) return {};
    const Variant sessions(g_variant_get_child_value(values, 0));
    GVariantIter iterator;
    g_variant_iter_init(&iterator, sessions.get());
    guint32 owner = 0;
    const char* seat = nullptr;
    const char* path = nullptr;
    std::string found;
    while (g_variant_iter_next(&iterator, "(&su&s&s&o)", nullptr, &owner, nullptr, &seat, &path) != 0) {
        if (owner != user) continue;
        if (*seat != '\0') return path;
        if (found.empty()) found = path;
    }
    return found;
}

}  // namespace orvane
