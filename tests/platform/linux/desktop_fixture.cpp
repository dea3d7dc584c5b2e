#include "desktop_fixture.h"

#include <glib.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <iterator>

namespace orvane::testing {

namespace fs = std::filesystem;

namespace {

fs::path root;

class Folders : public ::testing::Environment {
  public:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "orvane-linux-XXXXXX").string();
        root = fs::canonical(mkdtemp(pattern.data()));
        fs::create_directories(root / "data/applications");
        fs::create_directories(root / "bin");
        // By these gdk-pixbuf knows an image's format.
        fs::create_directories(root / "system");
        fs::create_symlink("/usr/share/mime", root / "system/mime");
        // GLib reads these once, when they are first needed.
        setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
        setenv("XDG_DATA_DIRS", (root / "system").c_str(), 1);
        setenv("PATH", ((root / "bin").string() + ":/usr/bin:/bin").c_str(), 1);
    }
    void TearDown() override { fs::remove_all(root); }
};

const auto* const folders = ::testing::AddGlobalTestEnvironment(new Folders);

}  // namespace

const fs::path& fixtureRoot() { return root; }

fs::path freshFolder(const std::string& name) {
    fs::remove_all(root / name);
    fs::create_directories(root / name);
    return root / name;
}

void writeFile(const fs::path& file, std::string_view text) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

std::string readFile(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void installEntry(const std::string& identifier, const std::string& lines, const std::string& program) {
    if (!program.empty()) {
        writeFile(root / "bin" / program, "");
        fs::permissions(root / "bin" / program, fs::perms::owner_all);
    }
    writeFile(root / "data/applications" / (identifier + ".desktop"),
              "[Desktop Entry]\nType=Application\nName=Name of " + identifier + "\n" + lines);
}

bool runUntil(const std::function<bool()>& condition) {
    bool isOver = false;
    const guint limit = g_timeout_add_seconds(
        60, [](gpointer over) -> gboolean { return *static_cast<bool*>(over) = true, G_SOURCE_CONTINUE; },
        &isOver);
    while (!condition() && !isOver) g_main_context_iteration(nullptr, TRUE);
    g_source_remove(limit);
    return condition();
}

void addProcess(const fs::path& procFolder, int number, const FakeProcess& process) {
    const fs::path folder = procFolder / std::to_string(number);
    fs::remove_all(folder);
    std::string command;
    for (const auto& word : process.command) (command += word) += '\0';
    writeFile(folder / "cmdline", command);
    // A name with everything that makes the line hard to read.
    writeFile(folder / "stat", std::to_string(number) + " (a) b (c) S " + std::to_string(process.parent) +
                                   ' ' + std::to_string(process.processGroup) + " 1 " +
                                   (process.hasTerminal ? "34816" : "0") + " -1 0 0 0 0 0 0 0 0 0 20 0 1 0 " +
                                   std::to_string(1000 + number) + " 0 0\n");
    writeFile(folder / "comm", "comm-" + std::to_string(number) + "\n");
    writeFile(folder / "cgroup",
              "0::/user.slice/user-1000.slice/user@1000.service/app.slice/" + process.unit + "\n");
    if (!process.executable.empty()) fs::create_symlink(process.executable, folder / "exe");
    fs::create_symlink(root / "work", folder / "cwd");
    if (!process.flatpakInfo.empty()) writeFile(folder / "root/.flatpak-info", process.flatpakInfo);
}

}  // namespace orvane::testing
