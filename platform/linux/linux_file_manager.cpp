#include "platform/linux/linux_file_manager.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "platform/library_resource.h"
#include "platform/linux/desktop_entries.h"
#include "platform/linux/xdg_folders.h"

namespace orvane {

namespace fs = std::filesystem;

namespace {

Error fileError(int code, const char* action, const fs::path& path, int systemError) {
    return {
        fileErrorDomain, code,
        Error::UserInfo{
            {NSLocalizedDescriptionKey, std::string("“") + path.string() + "” could not be " + action + "."},
            {NSLocalizedFailureReasonErrorKey, std::generic_category().message(systemError)}}};
}

}  // namespace

Error fileReadError(const fs::path& path, int systemError) {
    const int code = systemError == ENOENT || systemError == ENOTDIR ? fileReadNoSuchFileError
                     : systemError == EACCES || systemError == EPERM ? fileReadNoPermissionError
                                                                     : fileReadUnknownError;
    return fileError(code, "read", path, systemError);
}

Error fileWriteError(const fs::path& path, int systemError) {
    int code = fileWriteUnknownError;
    if (systemError == EACCES || systemError == EPERM) code = fileWriteNoPermissionError;
    if (systemError == EEXIST || systemError == ENOTDIR) code = fileWriteFileExistsError;
    if (systemError == ENOSPC || systemError == EDQUOT) code = fileWriteOutOfSpaceError;
    if (systemError == EROFS) code = fileWriteVolumeReadOnlyError;
    return fileError(code, "written", path, systemError);
}

std::vector<fs::path> LinuxFileManager::applicationSupportDirectories() { return {dataFolder()}; }

std::optional<bool> LinuxFileManager::isDirectory(const fs::path& path, Error* error) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        assignError(error, fileReadError(path, errno));
        return std::nullopt;
    }
    return S_ISDIR(status.st_mode);
}

bool LinuxFileManager::createDirectory(const fs::path& path, Error* error) {
    // "a/b/" ends in an empty component, which is no folder of its own.
    const fs::path folder = path.has_filename() ? path : path.parent_path();
    struct stat status {};
    if (stat(folder.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) return true;
        assignError(error, fileWriteError(folder, EEXIST));
        return false;
    }
    if (errno != ENOENT) {
        assignError(error, fileWriteError(folder, errno));
        return false;
    }
    const fs::path parent = folder.parent_path();
    if (!parent.empty() && parent != folder && !createDirectory(parent, error)) return false;
    if (mkdir(folder.c_str(), 0700) != 0) {
        const int failure = errno;
        // Another process may have been quicker.
        if (failure != EEXIST || stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
            assignError(error, fileWriteError(folder, failure));
            return false;
        }
    } else {
        // A umask may only have taken rights from us; without them nothing could be put there.
        chmod(folder.c_str(), 0700);
    }
    return true;
}

void LinuxFileManager::restrictToUser(const fs::path& folder) {
    struct stat status {};
    if (stat(folder.c_str(), &status) == 0 && status.st_uid == geteuid() && (status.st_mode & 077) != 0)
        chmod(folder.c_str(), status.st_mode & 0700);
}

bool LinuxFileManager::fileExists(const fs::path& path) { return access(path.c_str(), F_OK) == 0; }

Value LinuxFileManager::bundleInformation(std::string_view bundlePath, std::string_view key) {
    const fs::path entry = desktopEntryOfBundle(bundlePath);
    if (key == "CFBundleName") return localizedEntryValue(entry, "Name");
    if (key == "CFBundleIdentifier" && localizedEntryValue(entry, "Name")) return entryIdentifier(entry);
    return {};
}

std::optional<fs::path> LinuxFileManager::URLForResource(std::string_view name, std::string_view extension) {
    return libraryResource(name, extension);
}

}  // namespace orvane
