#include "platform/linux/desktop_entries.h"

#include <gio/gdesktopappinfo.h>

#include <algorithm>
#include <cctype>
#include <memory>

#include "platform/linux/xdg_folders.h"

namespace orvane {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view suffix = ".desktop";

std::string taken(char* text) {
    std::string result = text ? text : "";
    g_free(text);
    return result;
}

bool isAssignment(std::string_view word) {
    const auto equals = word.find('=');
    return equals != 0 && equals != std::string_view::npos &&
           std::all_of(word.begin(), word.begin() + static_cast<std::ptrdiff_t>(equals),
                       [](unsigned char c) { return std::isalnum(c) || c == '_'; });
}

/// The command of an Exec line, without field codes and without the environment that is set before it.
std::vector<std::string> commandOf(const std::string& exec) {
    gint count = 0;
    gchar** words = nullptr;
    if (exec.empty() || !g_shell_parse_argv(exec.c_str(), &count, &words, nullptr)) return {};
    const std::unique_ptr<gchar*, decltype(&g_strfreev)> owner(words, g_strfreev);
    std::vector<std::string> command;
    bool inEnvironment = false;
    for (int i = 0; i < count; ++i) {
        const std::string word = words[i];
        if (word.size() == 2 && word[0] == '%' && word[1] != '%') continue;
        if (command.empty()) {
            if (fs::path(word).filename() == "env") inEnvironment = true;
            if (inEnvironment && (isAssignment(word) || fs::path(word).filename() == "env")) continue;
        }
        command.push_back(word);
    }
    return command;
}

bool isTerminal(const char* categories) {
    if (categories == nullptr) return false;
    const std::unique_ptr<gchar*, decltype(&g_strfreev)> list(g_strsplit(categories, ";", -1), g_strfreev);
    return g_strv_contains(list.get(), "TerminalEmulator") != 0;
}

/// What the D-Bus specification's service file for the application's name starts.
Program serviceOf(const std::string& identifier) {
    for (const auto& folder : dataFolders()) {
        const auto file = folder / "dbus-1/services" / (identifier + ".service");
        const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> keys(g_key_file_new(), g_key_file_unref);
        if (!g_key_file_load_from_file(keys.get(), file.c_str(), G_KEY_FILE_NONE, nullptr)) continue;
        return Program::ofCommand(
            commandOf(taken(g_key_file_get_string(keys.get(), "D-BUS Service", "Exec", nullptr))));
    }
    return {};
}

DesktopEntry entryOf(GDesktopAppInfo* info) {
    DesktopEntry entry;
    entry.identifier = g_app_info_get_id(G_APP_INFO(info));
    if (entry.identifier.ends_with(suffix)) entry.identifier.resize(entry.identifier.size() - suffix.size());
    entry.name = g_app_info_get_name(G_APP_INFO(info));
    if (const char* file = g_desktop_app_info_get_filename(info)) entry.file = file;
    if (const char* startupClass = g_desktop_app_info_get_startup_wm_class(info))
        entry.startupClass = startupClass;
    entry.program = Program::ofCommand(commandOf(taken(g_desktop_app_info_get_string(info, "Exec"))));
    if (g_desktop_app_info_get_boolean(info, "DBusActivatable")) entry.service = serviceOf(entry.identifier);
    entry.isTerminal = isTerminal(g_desktop_app_info_get_categories(info));
    entry.runsInTerminal = g_desktop_app_info_get_boolean(info, "Terminal") != FALSE;
    entry.isHidden = g_desktop_app_info_get_nodisplay(info) != FALSE;
    entry.flatpak = taken(g_desktop_app_info_get_string(info, "X-Flatpak"));
    entry.snap = taken(g_desktop_app_info_get_string(info, "X-SnapInstanceName"));
    return entry;
}

}  // namespace

std::vector<DesktopEntry> installedDesktopEntries() {
    std::vector<DesktopEntry> entries;
    GList* all = g_app_info_get_all();
    for (GList* item = all; item; item = item->next) {
        if (G_IS_DESKTOP_APP_INFO(item->data) && g_app_info_get_id(G_APP_INFO(item->data)))
            entries.push_back(entryOf(G_DESKTOP_APP_INFO(item->data)));
    }
    g_list_free_full(all, g_object_unref);
    std::sort(entries.begin(), entries.end(),
              [](const auto& left, const auto& right) { return left.identifier < right.identifier; });
    return entries;
}

std::optional<DesktopEntry> desktopEntry(std::string_view identifier) {
    // A path is no identifier, though the look-up would follow it.
    if (identifier.empty() || identifier.find('/') != std::string_view::npos) return std::nullopt;
    std::string file(identifier);
    if (!identifier.ends_with(suffix)) file += suffix;
    GDesktopAppInfo* info = g_desktop_app_info_new(file.c_str());
    if (!info) return std::nullopt;
    auto entry = entryOf(info);
    g_object_unref(info);
    return entry;
}

std::optional<std::string> localizedEntryValue(const fs::path& file, const char* key) {
    const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> entry(g_key_file_new(), g_key_file_unref);
    if (!g_key_file_load_from_file(entry.get(), file.c_str(), G_KEY_FILE_NONE, nullptr)) return std::nullopt;
    char* value = g_key_file_get_locale_string(entry.get(), G_KEY_FILE_DESKTOP_GROUP, key, nullptr, nullptr);
    return value ? std::optional(taken(value)) : std::nullopt;
}

std::string entryIdentifier(const fs::path& file) {
    fs::path inside = file.filename();
    for (const auto& folder : dataFolders()) {
        const auto relative = file.lexically_relative(folder / "applications");
        if (!relative.empty() && *relative.begin() != "..") inside = relative;
    }
    std::string identifier = inside.replace_extension().string();
    std::replace(identifier.begin(), identifier.end(), '/', '-');
    return identifier;
}

fs::path desktopEntryOfBundle(const fs::path& bundle) {
    std::error_code failure;
    if (!fs::is_directory(bundle, failure)) return bundle;
    fs::path entry;
    for (auto file = fs::directory_iterator(bundle, failure); !failure && file != fs::directory_iterator();
         file.increment(failure)) {
        if (file->path().extension() != ".desktop") continue;
        if (!entry.empty()) return {};
        entry = file->path();
    }
    return entry;
}

}  // namespace orvane
