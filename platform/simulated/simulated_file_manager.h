#pragma once

#include <memory>

#include "platform/file_manager.h"
#include "platform/simulated/failing_file_system.h"
#include "platform/simulated/simulated_workspace.h"

namespace orvane {

/// Real files for a simulated user: folders are read and made on the disk, bundle information comes from the
/// workspace's applications, and databases are opened through a file system that can be made to fail.
class ORVANE_EXPORT SimulatedFileManager : public FileManager {
  public:
    /// The workspace must outlive the file manager.
    explicit SimulatedFileManager(SimulatedWorkspace& workspace) : workspace_(workspace) {}

    /// The folder that was set; none at first.
    std::vector<std::filesystem::path> applicationSupportDirectories() override;
    std::optional<bool> isDirectory(const std::filesystem::path& path, Error* error) override;
    bool createDirectory(const std::filesystem::path& path, Error* error) override;
    bool fileExists(const std::filesystem::path& path) override;
    /// Knows "CFBundleName".
    Value bundleInformation(std::string_view bundlePath, std::string_view key) override;
    std::optional<std::filesystem::path> URLForResource(std::string_view name,
                                                        std::string_view extension) override;
    std::string databaseFileSystem() override {
        return otherFileSystem_.empty() ? failingFileSystem_.name() : otherFileSystem_;
    }

    /// The simulated user's folder for application data.
    void setApplicationSupportDirectory(std::filesystem::path folder) { supportFolder_ = std::move(folder); }
    /// Where resources are looked for; empty (at first): where the library's own lie.
    void setResourceDirectory(std::filesystem::path folder) { resourceFolder_ = std::move(folder); }
    /// The one that databases are opened through, unless another was set.
    FailingFileSystem& failingFileSystem() { return failingFileSystem_; }
    /// Opens databases through another SQLite file system, which is named; empty: the failing one again.
    void setDatabaseFileSystem(std::string name) { otherFileSystem_ = std::move(name); }

  private:
    SimulatedWorkspace& workspace_;
    std::filesystem::path supportFolder_;
    std::filesystem::path resourceFolder_;
    std::string otherFileSystem_;
    FailingFileSystem failingFileSystem_;
};

}  // namespace orvane
