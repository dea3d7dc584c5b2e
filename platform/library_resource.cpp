#include "platform/library_resource.h"

#include <dlfcn.h>

#include <cstdlib>

namespace orvane {

namespace {

bool isThere(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

}  // namespace

std::filesystem::path libraryFile() {
    static const char anchor = 0;
    std::error_code ignored;
    Dl_info information;
    // For a program dladdr tells argument 0, which need not lead anywhere; the kernel knows better.
    std::filesystem::path file;
    if (dladdr(&anchor, &information) != 0 && information.dli_fname) file = information.dli_fname;
    file = std::filesystem::canonical(file, ignored);
    if (file.empty()) file = std::filesystem::read_symlink("/proc/self/exe", ignored);
    return file;
}

std::optional<std::filesystem::path> libraryResource(std::string_view name, std::string_view extension) {
    std::string fileName(name);
    fileName.append(".").append(extension);
    if (const char* chosen = std::getenv("ORVANE_RESOURCES"); chosen && *chosen) {
        std::filesystem::path resource = std::filesystem::path(chosen) / fileName;
        if (isThere(resource)) return resource;
    }
    std::filesystem::path folder = libraryFile().parent_path();
    while (!folder.empty()) {
        std::filesystem::path resource = folder / "share" / "orvane" / fileName;
        if (isThere(resource)) return resource;
        if (folder == folder.root_path()) break;
        folder = folder.parent_path();
    }
    for (const char* built : {ORVANE_RESOURCE_DIR, ORVANE_DESKTOP_RESOURCE_DIR}) {
        std::filesystem::path resource = std::filesystem::path(built) / fileName;
        if (isThere(resource)) return resource;
    }
    return std::nullopt;
}

}  // namespace orvane
