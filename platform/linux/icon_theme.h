#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/internal.h"

namespace orvane {

/// Finds icon files by name, after the freedesktop icon theme specification: in the theme, in those it
/// inherits from, in "hicolor" and last among the files that belong to no theme.
class IconTheme {
  public:
    /// Folders that hold themes, the most important one first; files right inside them belong to no theme.
    IconTheme(std::string_view name, std::vector<std::filesystem::path> folders);

    /// ~/.icons, the icon folders of the XDG data folders, /usr/share/pixmaps.
    static std::vector<std::filesystem::path> standardFolders();

    /// The file for an icon of that size in pixels at that scale, or the nearest there is; none when there is
    /// none. An absolute path stands for itself, and a file ending in a name is left off when nothing has the
    /// whole name.
    std::optional<std::filesystem::path> lookUp(std::string_view icon, int size, int scale = 1) const;

  private:
    struct Directory {
        std::string path;
        int scale = 1;
        /// Sizes that the icons in it are meant for.
        int smallest = 0;
        int largest = 0;

        bool matches(int iconSize, int iconScale) const;
        int distance(int iconSize, int iconScale) const;
    };
    struct Theme {
        std::vector<std::filesystem::path> folders;
        std::vector<Directory> directories;
    };

    void load(const std::string& name, std::vector<std::string>& seen);
    std::optional<std::filesystem::path> lookUpName(const std::string& icon, int size, int scale) const;
    static std::optional<std::filesystem::path> lookUpIn(const Theme& theme, const std::string& icon,
                                                         int size, int scale);

    std::vector<std::filesystem::path> folders_;
    /// In the order in which they are searched.
    std::vector<Theme> themes_;
};

}  // namespace orvane
