#include "platform/linux/icon_theme_name.h"

#include <gio/gio.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string_view>

#include "platform/linux/xdg_folders.h"

namespace orvane {

namespace {

std::string keyFileText(const std::filesystem::path& file, const char* group, const char* key) {
    const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> settings(g_key_file_new(), g_key_file_unref);
    if (!g_key_file_load_from_file(settings.get(), file.c_str(), G_KEY_FILE_NONE, nullptr)) return {};
    const std::unique_ptr<char, decltype(&g_free)> text(
        g_key_file_get_string(settings.get(), group, key, nullptr), g_free);
    return text ? text.get() : std::string();
}

std::string desktopSetting() {
    // A schema that is missing would end the process, hence the look at the source first.
    GSettingsSchemaSource* source = g_settings_schema_source_get_default();
    GSettingsSchema* schema =
        source ? g_settings_schema_source_lookup(source, "org.gnome.desktop.interface", TRUE) : nullptr;
    if (!schema) return {};
    std::string name;
    if (g_settings_schema_has_key(schema, "icon-theme")) {
        GSettings* settings = g_settings_new_full(schema, nullptr, nullptr);
        char* text = g_settings_get_string(settings, "icon-theme");
        name = text;
        g_free(text);
        g_object_unref(settings);
    }
    g_settings_schema_unref(schema);
    return name;
}

}  // namespace

std::string currentIconThemeName() {
    const char* desktop = std::getenv("XDG_CURRENT_DESKTOP");
    std::string name;
    if (desktop && std::string_view(desktop).find("KDE") != std::string_view::npos)
        name = keyFileText(configFolder() / "kdeglobals", "Icons", "Theme");
    if (name.empty()) name = desktopSetting();
    if (name.empty())
        name = keyFileText(configFolder() / "gtk-3.0/settings.ini", "Settings", "gtk-icon-theme-name");
    return name.empty() ? "Adwaita" : name;
}

}  // namespace orvane
