// The type of the settings' backend is told by this part of GIO only.
#define G_SETTINGS_ENABLE_BACKEND
#include "platform/linux/gnome/gnome_shell.h"

#include <gio/gsettingsbackend.h>

#include <algorithm>

#include "platform/linux/session/bus_connection.h"
#include "platform/linux/session/bus_link.h"

namespace orvane {

namespace {

constexpr int kTimeoutMilliseconds = 5000;
constexpr const char* kService = "org.gnome.Shell";
constexpr const char* kPath = "/org/gnome/Shell";
constexpr const char* kExtensions = "org.gnome.Shell.Extensions";

GSettings* openSettings() {
    // Without this look-up, a schema that is missing ends the program.
    auto* source = g_settings_schema_source_get_default();
    auto* schema =
        source != nullptr ? g_settings_schema_source_lookup(source, "org.gnome.shell", TRUE) : nullptr;
    if (schema == nullptr) return nullptr;
    auto* settings = g_settings_new_full(schema, nullptr, nullptr);
    g_settings_schema_unref(schema);
    return settings;
}

bool forgetsSettings() {
    auto* backend = g_settings_backend_get_default();
    const bool result = std::string(G_OBJECT_TYPE_NAME(backend)) == "GMemorySettingsBackend";
    g_object_unref(backend);
    return result;
}

/// Puts a text into the list under the key, or takes it out; whether that was a change.
bool setListed(GSettings* settings, const char* key, const std::string& text, bool listed) {
    char** list = g_settings_get_strv(settings, key);
    std::vector<std::string> texts;
    for (char** each = list; *each != nullptr; ++each) texts.emplace_back(*each);
    g_strfreev(list);
    const auto found = std::find(texts.begin(), texts.end(), text);
    if ((found != texts.end()) == listed) return false;
    if (listed) {
        texts.push_back(text);
    } else {
        texts.erase(found);
    }
    std::vector<const char*> pointers;
    for (const auto& each : texts) pointers.push_back(each.c_str());
    pointers.push_back(nullptr);
    return g_settings_set_strv(settings, key, pointers.data()) != 0;
}

bool isListed(GSettings* settings, const char* key, const std::string& text) {
    char** list = g_settings_get_strv(settings, key);
    const bool result = g_strv_contains(list, text.c_str()) != 0;
    g_strfreev(list);
    return result;
}

}  // namespace

GnomeShell::GnomeShell() : settings_(openSettings()) {
    const auto address = BusLink::sessionBusAddress();
    if (address.empty()) return;
    connection_ = g_dbus_connection_new_for_address_sync(
        address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
    const Variant reply(
        call("org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", kService, "ShellVersion")));
    if (!reply || !g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(v)"))) return;
    GVariant* inner = nullptr;
    g_variant_get(reply.get(), "(v)", &inner);
    const Variant value(inner);
    if (g_variant_is_of_type(inner, G_VARIANT_TYPE_STRING)) version_ = g_variant_get_string(inner, nullptr);
}

GnomeShell::~GnomeShell() {
    g_clear_object(&settings_);
    if (connection_ == nullptr) return;
    g_dbus_connection_close_sync(connection_, nullptr, nullptr);
    g_object_unref(connection_);
}

GVariant* GnomeShell::call(const char* interface, const char* method, GVariant* arguments) {
    const Variant owned(g_variant_ref_sink(arguments));
    if (connection_ == nullptr) return nullptr;
    return g_dbus_connection_call_sync(connection_, kService, kPath, interface, method, arguments, nullptr,
                                       G_DBUS_CALL_FLAGS_NO_AUTO_START, kTimeoutMilliseconds, nullptr,
                                       nullptr);
}

GVariant* GnomeShell::information(const std::string& extension) {
    const Variant reply(call(kExtensions, "GetExtensionInfo", g_variant_new("(s)", extension.c_str())));
    if (!reply || !g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(a{sv})"))) return nullptr;
    return g_variant_get_child_value(reply.get(), 0);
}

std::optional<GnomeShell::ExtensionState> GnomeShell::state(const std::string& extension) {
    const Variant details(information(extension));
    double number = 0;
    if (!details || g_variant_lookup(details.get(), "state", "d", &number) == 0) return std::nullopt;
    for (const auto known : {ExtensionState::running, ExtensionState::failed, ExtensionState::tooOld}) {
        if (static_cast<int>(number) == static_cast<int>(known)) return known;
    }
    return ExtensionState::off;
}

std::string GnomeShell::failure(const std::string& extension) {
    const Variant details(information(extension));
    const char* text = nullptr;
    return details && g_variant_lookup(details.get(), "error", "&s", &text) != 0 ? text : "";
}

bool GnomeShell::switchExtension(const std::string& extension, bool on) {
    const Variant reply(call(kExtensions, on ? "EnableExtension" : "DisableExtension",
                             g_variant_new("(s)", extension.c_str())));
    gboolean isDone = FALSE;
    if (reply && g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(b)"))) {
        g_variant_get(reply.get(), "(b)", &isDone);
    }
    return isDone != FALSE;
}

std::string GnomeShell::setInSettings(const std::string& extension, bool on, bool& changed) {
    if (settings_ == nullptr) return "the settings of GNOME Shell are not installed";
    const bool isEntered = isListed(settings_, "enabled-extensions", extension);
    const bool isRefused = isListed(settings_, "disabled-extensions", extension);
    if (isEntered == on && !isRefused) return {};
    if (forgetsSettings()) return "no settings service (dconf) is at hand that would keep them";
    changed = setListed(settings_, "enabled-extensions", extension, on);
    changed = setListed(settings_, "disabled-extensions", extension, false) || changed;
    g_settings_sync();
    return changed ? std::string() : "the settings of GNOME Shell cannot be written";
}

bool GnomeShell::areExtensionsOff() const {
    return settings_ != nullptr && g_settings_get_boolean(settings_, "disable-user-extensions") != 0;
}

}  // namespace orvane
