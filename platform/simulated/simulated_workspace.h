#pragma once

#include <map>

#include "platform/workspace.h"

namespace orvane {

/// An installed application; each part may be missing.
struct SimulatedApplication {
    std::optional<std::string> path;        ///< where it is installed, and what its icon belongs to
    std::optional<std::string> bundlePath;  ///< where its bundle information lies
    std::optional<std::string> bundleName;  ///< "CFBundleName" of that information
    Image icon;
};

/// A workspace that is told which applications there are and which one is in front. Setting something posts
/// no notification; whoever writes the script posts it in `notificationCenter()`.
class ORVANE_EXPORT SimulatedWorkspace : public Workspace {
  public:
    /// By bundle identifier.
    using Applications = std::map<std::string, SimulatedApplication, std::less<>>;

    std::optional<RunningApplication> frontmostApplication() override { return frontmost_; }
    std::optional<std::filesystem::path> URLForApplicationWithBundleIdentifier(
        std::string_view identifier) override;
    std::optional<std::string> absolutePathForAppBundleWithIdentifier(std::string_view identifier) override;
    /// The icon of the first application, by identifier, that has one and is installed at the path.
    Image iconForFile(const std::filesystem::path& path) override;
    NotificationCenter& notificationCenter() override { return notificationCenter_; }

    void setFrontmostApplication(std::optional<RunningApplication> application) {
        frontmost_ = std::move(application);
    }
    void setApplications(Applications applications) { applications_ = std::move(applications); }
    const Applications& applications() const { return applications_; }

  private:
    std::optional<RunningApplication> frontmost_;
    Applications applications_;
    NotificationCenter notificationCenter_;
};

}  // namespace orvane
