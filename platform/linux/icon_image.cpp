#include "platform/linux/icon_image.h"

#include <gio/gio.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/desktop_entries.h"
#include "platform/linux/helper_program.h"
#include "platform/linux/icon_theme_name.h"

namespace orvane {

namespace fs = std::filesystem;

namespace {

constexpr int iconSize = 32;

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <class T>
using Handle = std::unique_ptr<T, Unref>;

/// Names of the icon for a file's kind, the most fitting one first.
std::vector<std::string> namesForKind(const fs::path& path) {
    std::vector<std::string> names;
    const Handle<GFile> file(g_file_new_for_path(path.c_str()));
    const Handle<GFileInfo> info(g_file_query_info(file.get(), G_FILE_ATTRIBUTE_STANDARD_ICON,
                                                   G_FILE_QUERY_INFO_NONE, nullptr, nullptr));
    GIcon* icon = info ? g_file_info_get_icon(info.get()) : nullptr;
    if (icon && G_IS_THEMED_ICON(icon)) {
        for (const char* const* name = g_themed_icon_get_names(G_THEMED_ICON(icon)); *name; ++name)
            names.emplace_back(*name);
    }
    return names;
}

}  // namespace

Image drawImageFile(const fs::path& file, int size) {
    static const std::optional<fs::path> program = helperProgram("orvane-draw-icon");
    if (!program) return {};
    constexpr std::chrono::milliseconds longest(2000);
    constexpr std::size_t channels = 4;
    const std::size_t bytes = static_cast<std::size_t>(size) * static_cast<std::size_t>(size) * channels;
    auto pixels = outputOfProgram({program->string(), std::to_string(size), file.string()}, bytes, longest);
    if (!pixels || pixels->size() != bytes) return {};
    return {size, size, std::move(*pixels)};
}

Image fileIcon(const fs::path& file, const IconTheme& theme) {
    const fs::path entry = desktopEntryOfBundle(file);
    std::vector<std::string> names;
    if (entry.extension() == ".desktop") {
        if (const auto icon = localizedEntryValue(entry, "Icon")) names.push_back(*icon);
    } else {
        names = namesForKind(file);
    }
    for (const auto& name : names) {
        if (const auto found = theme.lookUp(name, iconSize)) return drawImageFile(*found, iconSize);
    }
    return {};
}

Image fileIcon(const fs::path& file) {
    // Read anew each time: icons are asked for rarely, and themes change and are large.
    return fileIcon(file, IconTheme(currentIconThemeName(), IconTheme::standardFolders()));
}

}  // namespace orvane
