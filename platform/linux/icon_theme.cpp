#include "platform/linux/icon_theme.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <memory>

#include "platform/linux/xdg_folders.h"

namespace orvane {

namespace fs = std::filesystem;

namespace {

constexpr std::array<std::string_view, 3> endings{".png", ".svg", ".xpm"};
constexpr const char* themeGroup = "Icon Theme";

bool isFile(const fs::path& path) {
    std::error_code failure;
    return fs::is_regular_file(path, failure);
}

std::vector<std::string> stringList(GKeyFile* file, const char* group, const char* key) {
    std::vector<std::string> result;
    gsize count = 0;
    // Icon themes separate with commas where key files use semicolons.
    g_key_file_set_list_separator(file, ',');
    gchar** texts = g_key_file_get_string_list(file, group, key, &count, nullptr);
    for (gsize i = 0; i < count; ++i) result.emplace_back(g_strstrip(texts[i]));
    g_strfreev(texts);
    return result;
}

int number(GKeyFile* file, const std::string& group, const char* key, int fallback) {
    GError* error = nullptr;
    const int value = g_key_file_get_integer(file, group.c_str(), key, &error);
    if (!error) return value;
    g_error_free(error);
    return fallback;
}

std::optional<fs::path> fileIn(const fs::path& folder, const std::string& icon) {
    for (const auto ending : endings) {
        if (fs::path file = folder / (icon + std::string(ending)); isFile(file)) return file;
    }
    return std::nullopt;
}

}  // namespace

bool IconTheme::Directory::matches(int iconSize, int iconScale) const {
    return scale == iconScale && smallest <= iconSize && iconSize <= largest;
}

int IconTheme::Directory::distance(int iconSize, int iconScale) const {
    const int wanted = iconSize * iconScale;
    if (wanted < smallest * scale) return smallest * scale - wanted;
    if (wanted > largest * scale) return wanted - largest * scale;
    return 0;
}

IconTheme::IconTheme(std::string_view name, std::vector<fs::path> folders) : folders_(std::move(folders)) {
    std::vector<std::string> seen;
    load(std::string(name), seen);
    // Every theme falls back on this one, also those that do not say so.
    load("hicolor", seen);
}

std::vector<fs::path> IconTheme::standardFolders() {
    std::vector<fs::path> folders{homeFolder() / ".icons"};
    for (const auto& folder : dataFolders()) folders.push_back(folder / "icons");
    folders.emplace_back("/usr/share/pixmaps");
    return folders;
}

void IconTheme::load(const std::string& name, std::vector<std::string>& seen) {
    if (name.empty() || name.find('/') != std::string::npos ||
        std::find(seen.begin(), seen.end(), name) != seen.end()) {
        return;
    }
    seen.push_back(name);

    Theme theme;
    const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> owner(g_key_file_new(), g_key_file_unref);
    GKeyFile* index = owner.get();
    bool hasIndex = false;
    for (const auto& folder : folders_) {
        std::error_code failure;
        if (!fs::is_directory(folder / name, failure)) continue;
        theme.folders.push_back(folder / name);
        // The first index counts; folders further down only add files.
        const auto file = folder / name / "index.theme";
        if (!hasIndex)
            hasIndex = g_key_file_load_from_file(index, file.c_str(), G_KEY_FILE_NONE, nullptr) != 0;
    }
    if (!hasIndex) return;

    auto directories = stringList(index, themeGroup, "Directories");
    for (auto& scaled : stringList(index, themeGroup, "ScaledDirectories"))
        directories.push_back(std::move(scaled));
    for (const auto& path : directories) {
        Directory directory;
        directory.path = path;
        const int size = number(index, path, "Size", 0);
        if (size <= 0) continue;
        directory.scale = std::max(1, number(index, path, "Scale", 1));
        const std::unique_ptr<char, decltype(&g_free)> type(
            g_key_file_get_string(index, path.c_str(), "Type", nullptr), g_free);
        const std::string_view kind = type ? type.get() : "Threshold";
        const int threshold = kind == "Threshold" ? number(index, path, "Threshold", 2) : 0;
        directory.smallest = size - threshold;
        directory.largest = size + threshold;
        if (kind == "Scalable") {
            directory.smallest = number(index, path, "MinSize", size);
            directory.largest = number(index, path, "MaxSize", size);
        }
        theme.directories.push_back(std::move(directory));
    }
    themes_.push_back(std::move(theme));
    for (const auto& parent : stringList(index, themeGroup, "Inherits")) {
        // It comes last even where a theme names it among others.
        if (parent != "hicolor") load(parent, seen);
    }
}

std::optional<fs::path> IconTheme::lookUpIn(const Theme& theme, const std::string& icon, int size,
                                            int scale) {
    std::optional<fs::path> nearest;
    int nearestDistance = std::numeric_limits<int>::max();
    for (const auto& directory : theme.directories) {
        const bool isExact = directory.matches(size, scale);
        const int distance = directory.distance(size, scale);
        if (!isExact && distance >= nearestDistance) continue;
        for (const auto& folder : theme.folders) {
            auto file = fileIn(folder / directory.path, icon);
            if (!file) continue;
            if (isExact) return file;
            nearest = file;
            nearestDistance = distance;
            break;
        }
    }
    return nearest;
}

std::optional<fs::path> IconTheme::lookUpName(const std::string& icon, int size, int scale) const {
    for (const auto& theme : themes_) {
        if (auto file = lookUpIn(theme, icon, size, scale)) return file;
    }
    for (const auto& folder : folders_) {
        if (auto file = fileIn(folder, icon)) return file;
    }
    return std::nullopt;
}

std::optional<fs::path> IconTheme::lookUp(std::string_view icon, int size, int scale) const {
    const fs::path path(icon);
    if (path.is_absolute()) return isFile(path) ? std::optional(path) : std::nullopt;
    if (icon.empty() || path.has_parent_path()) return std::nullopt;
    // Names may contain dots, so the whole name goes first.
    if (auto file = lookUpName(path.string(), size, scale)) return file;
    const bool hasEnding =
        std::find(endings.begin(), endings.end(), path.extension().string()) != endings.end();
    return hasEnding ? lookUpName(path.stem().string(), size, scale) : std::nullopt;
}

}  // namespace orvane
