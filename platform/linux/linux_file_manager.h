#pragma once

#include "foundation/internal.h"
#include "platform/file_manager.h"

namespace orvane {

/// Files of the running system. A bundle is a desktop entry, or a folder that holds just one.
class LinuxFileManager : public FileManager {
  public:
    /// The XDG data folder alone.
    std::vector<std::filesystem::path> applicationSupportDirectories() override;
    std::optional<bool> isDirectory(const std::filesystem::path& path, Error* error) override;
    bool createDirectory(const std::filesystem::path& path, Error* error) override;
    void restrictToUser(const std::filesystem::path& folder) override;
    bool fileExists(const std::filesystem::path& path) override;
    /// "CFBundleName" is the entry's name in the user's language, "CFBundleIdentifier" its identifier.
    Value bundleInformation(std::string_view bundlePath, std::string_view key) override;
    std::optional<std::filesystem::path> URLForResource(std::string_view name,
                                                        std::string_view extension) override;
};

/// The error that tells why the system refused to read or write a path.
Error fileReadError(const std::filesystem::path& path, int systemError);
Error fileWriteError(const std::filesystem::path& path, int systemError);

}  // namespace orvane
