#include "platform/linux/icon_theme_name.h"

#include <glib.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string_view>

#include "platform/linux/helper_program.h"
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

/// GSettings ties its process to the session's bus, and GIO ends the process when that bus ends; hence it is
/// another program's that reads it.
std::string desktopSetting() {
    const auto program = helperProgram("orvane-draw-icon");
    if (!program) return {};
    constexpr std::chrono::milliseconds longest(1000);
    constexpr std::size_t mostBytes = 1000;
    const auto name = outputOfProgram({program->string(), "--theme"}, mostBytes, longest);
    return name ? std::string(name->begin(), name->end()) : std::string();
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
