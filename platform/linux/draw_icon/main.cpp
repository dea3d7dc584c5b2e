// Draws one image file for the library, in a process of its own: the libraries that read all the formats take
// several times the memory of everything else, and never give it back.
//   orvane-draw-icon SIZE FILE
// Writes SIZE x SIZE pixels of four bytes (red, green, blue, alpha) to standard output, row by row from the
// top left. Nothing, and exit status 1, when the file cannot be read.

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

int main(int argc, char** argv) {
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
