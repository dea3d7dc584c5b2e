// Draws one image file for the library, in a process of its own: the libraries that read all the formats take
// several times the memory of everything else, and never give it back. What else must not happen in the
// host's process is done here too.
//   orvane-draw-icon SIZE FILE
// Writes SIZE x SIZE pixels of four bytes (red, green, blue, alpha) to standard output, row by row from the
// top left. Nothing, and exit status 1, when the file cannot be read.
//   orvane-draw-icon --theme
// Writes the name of the icon theme in the settings of the desktop's interface; nothing when there is none.

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gio/gio.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace {

int writeThemeName() {
    // A schema that is missing would end the process, hence the look at the source first.
    GSettingsSchemaSource* source = g_settings_schema_source_get_default();
    GSettingsSchema* schema =
        source ? g_settings_schema_source_lookup(source, "org.gnome.desktop.interface", TRUE) : nullptr;
    if (!schema || !g_settings_schema_has_key(schema, "icon-theme")) return 0;
    GSettings* settings = g_settings_new_full(schema, nullptr, nullptr);
    return std::fputs(g_settings_get_string(settings, "icon-theme"), stdout) >= 0 && std::fflush(stdout) == 0
               ? 0
               : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::string_view(argv[1]) == "--theme") return writeThemeName();
    constexpr int largestSize = 1024;
    const int size = argc == 3 ? std::atoi(argv[1]) : 0;
    if (size < 1 || size > largestSize) return 2;

    GdkPixbuf* drawn = gdk_pixbuf_new_from_file_at_scale(argv[2], size, size, TRUE, nullptr);
    GdkPixbuf* source = drawn ? gdk_pixbuf_add_alpha(drawn, FALSE, 0, 0, 0) : nullptr;
    if (!source) return 1;
    const int width = std::min(size, gdk_pixbuf_get_width(source));
    const int height = std::min(size, gdk_pixbuf_get_height(source));
    const guint8* rows = gdk_pixbuf_read_pixels(source);
    const int stride = gdk_pixbuf_get_rowstride(source);

    constexpr int channels = 4;
    std::vector<guint8> pixels(static_cast<std::size_t>(size * size * channels));
    for (int y = 0; y < height; ++y) {
        const auto offset = (((size - height) / 2 + y) * size + (size - width) / 2) * channels;
        std::copy_n(rows + y * stride, width * channels, pixels.begin() + offset);
    }
    return std::fwrite(pixels.data(), 1, pixels.size(), stdout) == pixels.size() && std::fflush(stdout) == 0
               ? 0
               : 1;
}
