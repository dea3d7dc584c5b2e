#include "platform/linux/xdg_folders.h"

#include <glib.h>

#include <cstdlib>
#include <string_view>

namespace orvane {

namespace {

std::filesystem::path absolutePathFrom(const char* variable) {
    const char* value = std::getenv(variable);
    return value && *value == '/' ? std::filesystem::path(value) : std::filesystem::path();
}

}  // namespace

std::filesystem::path homeFolder() {
    auto home = absolutePathFrom("HOME");
    // GLib goes on to the user database.
    return home.empty() ? std::filesystem::path(g_get_home_dir()) : home;
}

std::filesystem::path configFolder() {
    auto folder = absolutePathFrom("XDG_CONFIG_HOME");
    return folder.empty() ? homeFolder() / ".config" : folder;
}

std::filesystem::path dataFolder() {
    auto folder = absolutePathFrom("XDG_DATA_HOME");
    return folder.empty() ? homeFolder() / ".local/share" : folder;
}

std::vector<std::filesystem::path> dataFolders() {
    std::vector<std::filesystem::path> folders{dataFolder()};
    const char* value = std::getenv("XDG_DATA_DIRS");
    std::string_view rest = value && *value ? value : "/usr/local/share:/usr/share";
    while (!rest.empty()) {
        const auto end = std::min(rest.find(':'), rest.size());
        if (const auto folder = rest.substr(0, end); folder.starts_with('/')) folders.emplace_back(folder);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return folders;
}

}  // namespace orvane
