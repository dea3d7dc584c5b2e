#include "platform/linux/kwin/kwin_permission.h"

#include <glib.h>

#include <fstream>
#include <iterator>
#include <system_error>

#include "platform/linux/xdg_folders.h"

namespace orvane {

namespace fs = std::filesystem;

namespace {

constexpr const char* kMark = "X-Orvane-Permission=true\n";

std::string contents(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// KDE's programs find entries through an index. KWin 5.27 brings it up to date by itself when a program
/// connects; other releases need not.
void updateIndex() {
    for (const char* program : {"kbuildsycoca6", "kbuildsycoca5"}) {
        char* path = g_find_program_in_path(program);
        if (path == nullptr) continue;
        char* command[] = {path, nullptr};
        g_spawn_sync(nullptr, command, nullptr,
                     static_cast<GSpawnFlags>(G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL),
                     nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
        g_free(path);
    }
}

}  // namespace

KwinPermission::KwinPermission() : file_(dataFolder() / "applications/orvane.desktop") {}

KwinPermission::Outcome KwinPermission::grant(const fs::path& program) const {
    const std::string former = contents(file_);
    if (!former.empty() && former.find(kMark) == std::string::npos)
        return {false, file_.string() + " is there already and not from this command: move it away"};
    // Each would have to be escaped, and KWin compares paths without undoing that.
    if (program.native().find_first_of("\"`$\\%\n") != std::string::npos)
        return {false,
                "KWin finds no program whose path has a quotation mark, backquote, backslash, $ or % in "
                "it: move it to another folder"};
    const std::string wanted =
        "[Desktop Entry]\n"
        "Type=Application\n"
        "Name=Orvane\n"
        "Comment=Records which applications and windows are in use\n"
        "NoDisplay=true\n"
        "Exec=\"" +
        program.string() +
        "\"\n"
        "X-KDE-Wayland-Interfaces=org_kde_plasma_window_management\n" +
        kMark;
    if (former == wanted) return {};
    std::error_code error;
    fs::create_directories(file_.parent_path(), error);
    // As a whole or not at all: half an entry would not be known as one of ours.
    GError* failure = nullptr;
    if (g_file_set_contents(file_.c_str(), wanted.data(), static_cast<gssize>(wanted.size()), &failure) ==
        0) {
        Outcome outcome{false, failure->message};
        g_error_free(failure);
        return outcome;
    }
    updateIndex();
    return {true, {}};
}

KwinPermission::Outcome KwinPermission::withdraw() const {
    const std::string former = contents(file_);
    if (former.empty()) return {};
    if (former.find(kMark) == std::string::npos)
        return {false, file_.string() + " is not from this command and was left as it is"};
    std::error_code error;
    if (!fs::remove(file_, error)) return {false, file_.string() + " cannot be removed: " + error.message()};
    updateIndex();
    return {true, {}};
}

}  // namespace orvane
