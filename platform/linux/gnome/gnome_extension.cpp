#include "platform/linux/gnome/gnome_extension.h"

#include <glib.h>

#include <charconv>
#include <fstream>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <system_error>

#include "platform/library_resource.h"
#include "platform/linux/xdg_folders.h"

namespace orvane {

namespace fs = std::filesystem;

namespace {

constexpr int kOldestShell = 42;
// From here on the shell loads extensions as ECMAScript modules, which it did not know before.
constexpr int kFirstShellWithModules = 45;

std::optional<std::string> contents(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

int majorVersion(const std::string& version) {
    int number = 0;
    std::from_chars(version.data(), version.data() + version.size(), number);
    return number;
}

/// The description of the extension, naming only shells that load it in this form: any other, such as the
/// one after the next upgrade, then says so instead of failing on it.
std::optional<std::string> descriptionFor(int shell, const std::string& source) {
    auto description = nlohmann::ordered_json::parse(source, nullptr, false);
    if (!description.is_object()) return std::nullopt;
    auto& versions = description["shell-version"];
    auto kept = nlohmann::ordered_json::array();
    bool isNamed = false;
    for (const auto& version : versions) {
        if (!version.is_string()) continue;
        const int number = majorVersion(version.get<std::string>());
        if ((number < kFirstShellWithModules) == (shell < kFirstShellWithModules)) kept.push_back(version);
        isNamed = isNamed || number == shell;
    }
    // Newer ones than were known here have mostly changed nothing that matters.
    if (!isNamed) kept.push_back(std::to_string(shell));
    versions = std::move(kept);
    return description.dump(4) + '\n';
}

}  // namespace

GnomeExtension::GnomeExtension() : folder_(dataFolder() / "gnome-shell/extensions" / identifier) {}

bool GnomeExtension::isInstalled() const {
    std::error_code ignored;
    return fs::exists(folder_ / "metadata.json", ignored);
}

GnomeExtension::Outcome GnomeExtension::install(const std::string& shellVersion) const {
    const int shell = majorVersion(shellVersion);
    if (shell < kOldestShell) {
        return {false, "GNOME Shell " + shellVersion + " is older than the extension can be used with"};
    }
    const auto source = libraryResource("Windows", "shell-extension");
    if (!source) return {false, "the extension's files were not installed with this program"};
    const auto metadata = contents(*source / "metadata.json");
    const auto body = contents(*source / "windows.js");
    const auto entry =
        contents(*source / (shell < kFirstShellWithModules ? "legacy_entry.js" : "module_entry.js"));
    const auto description = metadata ? descriptionFor(shell, *metadata) : std::nullopt;
    if (!description || !body || !entry) {
        return {false, "the extension's files in " + source->string() + " cannot be read"};
    }

    std::error_code error;
    fs::create_directories(folder_, error);
    if (error) return {false, folder_.string() + " cannot be made: " + error.message()};
    Outcome outcome;
    for (const auto& [name, text] :
         {std::pair("extension.js", *body + *entry), {"metadata.json", *description}}) {
        const auto file = folder_ / name;
        if (contents(file) == text) continue;
        GError* failure = nullptr;
        if (g_file_set_contents(file.c_str(), text.data(), static_cast<gssize>(text.size()), &failure) == 0) {
            outcome.problem = failure->message;
            g_error_free(failure);
            return outcome;
        }
        outcome.isChanged = true;
    }
    return outcome;
}

GnomeExtension::Outcome GnomeExtension::remove() const {
    std::error_code error;
    const auto removed = fs::remove_all(folder_, error);
    if (error) return {false, folder_.string() + " cannot be removed: " + error.message()};
    return {removed != 0, {}};
}

}  // namespace orvane
