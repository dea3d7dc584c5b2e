#include "platform/simulated/simulated_file_manager.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "platform/library_resource.h"

namespace orvane {

namespace {

int readCode(int number) {
    switch (number) {
        case ENOENT:
        case ENOTDIR:
            return fileReadNoSuchFileError;
        case EACCES:
        case EPERM:
            return fileReadNoPermissionError;
        default:
            return fileReadUnknownError;
    }
}

int writeCode(int number) {
    switch (number) {
        case EACCES:
        case EPERM:
            return fileWriteNoPermissionError;
        case EEXIST:
        case ENOTDIR:
            return fileWriteFileExistsError;
        case ENOSPC:
        case EDQUOT:
            return fileWriteOutOfSpaceError;
        case EROFS:
            return fileWriteVolumeReadOnlyError;
        default:
            return fileWriteUnknownError;
    }
}

void fail(Error* error, int code, const std::filesystem::path& path, int number) {
    assignError(error, Error(fileErrorDomain, code,
                             Error::UserInfo{{NSLocalizedDescriptionKey, path.string() + " cannot be used."},
                                             {NSLocalizedFailureReasonErrorKey, std::strerror(number)}}));
}

/// A zero byte would silently cut the path short.
int readStatus(const std::filesystem::path& path, struct stat& status) {
    if (path.native().find('\0') != std::string::npos) return EINVAL;
    return stat(path.c_str(), &status) == 0 ? 0 : errno;
}

}  // namespace

std::vector<std::filesystem::path> SimulatedFileManager::applicationSupportDirectories() {
    if (supportFolder_.empty()) return {};
    return {supportFolder_};
}

std::optional<bool> SimulatedFileManager::isDirectory(const std::filesystem::path& path, Error* error) {
    struct stat status;
    if (const int number = readStatus(path, status); number != 0) {
        fail(error, readCode(number), path, number);
        return std::nullopt;
    }
    return S_ISDIR(status.st_mode);
}

bool SimulatedFileManager::createDirectory(const std::filesystem::path& path, Error* error) {
    struct stat status;
    const int number = readStatus(path, status);
    if (number == 0) {
        if (S_ISDIR(status.st_mode)) return true;
        fail(error, fileWriteFileExistsError, path, EEXIST);
        return false;
    }
    if (number != ENOENT) {
        fail(error, writeCode(number), path, number);
        return false;
    }
    const std::filesystem::path parent =
        path.has_filename() ? path.parent_path() : path.parent_path().parent_path();
    if (!parent.empty() && parent != path && !createDirectory(parent, error)) return false;
    if (mkdir(path.c_str(), S_IRWXU) == 0) return true;
    const int failure = errno;
    // Somebody else may have made it meanwhile; a link that leads nowhere is no folder.
    if (failure == EEXIST && readStatus(path, status) == 0 && S_ISDIR(status.st_mode)) return true;
    fail(error, writeCode(failure), path, failure);
    return false;
}

bool SimulatedFileManager::fileExists(const std::filesystem::path& path) {
    struct stat status;
    return readStatus(path, status) == 0;
}

Value SimulatedFileManager::bundleInformation(std::string_view bundlePath, std::string_view key) {
    if (key != "CFBundleName") return {};
    for (const auto& [identifier, application] : workspace_.applications())
        if (application.bundlePath == bundlePath && application.bundleName) return *application.bundleName;
    return {};
}

std::optional<std::filesystem::path> SimulatedFileManager::URLForResource(std::string_view name,
                                                                          std::string_view extension) {
    if (resourceFolder_.empty()) return libraryResource(name, extension);
    const std::filesystem::path path = resourceFolder_ / (std::string(name) + "." + std::string(extension));
    return fileExists(path) ? std::optional(path) : std::nullopt;
}

}  // namespace orvane
