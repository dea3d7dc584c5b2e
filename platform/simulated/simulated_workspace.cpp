#include "platform/simulated/simulated_workspace.h"

namespace orvane {

std::optional<std::filesystem::path> SimulatedWorkspace::URLForApplicationWithBundleIdentifier(
    std::string_view identifier) {
    const auto found = applications_.find(identifier);
    if (found == applications_.end() || !found->second.path) return std::nullopt;
    return std::filesystem::path(*found->second.path);
}

std::optional<std::string> SimulatedWorkspace::absolutePathForAppBundleWithIdentifier(
    std::string_view identifier) {
    const auto found = applications_.find(identifier);
    return found == applications_.end() ? std::nullopt : found->second.bundlePath;
}

Image SimulatedWorkspace::iconForFile(const std::filesystem::path& path) {
    for (const auto& [identifier, application] : applications_)
        if (application.path == path.native() && !application.icon.pixels.empty()) return application.icon;
    return {};
}

}  // namespace orvane
