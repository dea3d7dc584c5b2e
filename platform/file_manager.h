#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/error.h"
#include "foundation/value.h"

namespace orvane {

inline constexpr const char* fileErrorDomain = "OrvaneFileErrorDomain";

/// Codes of `fileErrorDomain`.
enum FileErrorCode : int {
    fileReadUnknownError = 256,       ///< reading failed for another reason
    fileReadNoPermissionError = 257,  ///< the user may not read it
    fileReadNoSuchFileError = 260,    ///< there is no such file
    fileWriteUnknownError = 512,
    fileWriteNoPermissionError = 513,
    fileWriteFileExistsError = 516,
    fileWriteOutOfSpaceError = 640,
    fileWriteVolumeReadOnlyError = 642,
};

/// Files, folders and bundles. Main thread only.
class ORVANE_EXPORT FileManager {
  public:
    virtual ~FileManager() = default;

    /// The current user's folders for application data, the one to use last.
    virtual std::vector<std::filesystem::path> applicationSupportDirectories() = 0;
    /// Whether a folder stands at the path; none, with an error, when that cannot be read
    /// (`fileReadNoSuchFileError` when nothing stands there).
    virtual std::optional<bool> isDirectory(const std::filesystem::path& path, Error* error) = 0;
    /// Makes a folder with all missing folders on the way, for this user alone (mode 0700). Success when it
    /// exists.
    virtual bool createDirectory(const std::filesystem::path& path, Error* error) = 0;
    /// Takes the rights of others away from a folder that is the user's own; does nothing where that fails.
    virtual void restrictToUser(const std::filesystem::path& folder) { static_cast<void>(folder); }
    virtual bool fileExists(const std::filesystem::path& path) = 0;
    /// A value of a bundle's information dictionary; none when there is no bundle or no such key.
    virtual Value bundleInformation(std::string_view bundlePath, std::string_view key) = 0;
    /// Where the library's own resource lies; none when it is missing.
    virtual std::optional<std::filesystem::path> URLForResource(std::string_view name,
                                                                std::string_view extension) = 0;
    /// Name of the SQLite file system through which databases are opened; empty for the usual one.
    virtual std::string databaseFileSystem() { return {}; }
};

}  // namespace orvane
