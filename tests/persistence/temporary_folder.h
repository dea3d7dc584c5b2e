#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace orvane::test {

/// An empty folder that goes away with all it holds.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
};

std::string bytesOf(const std::filesystem::path& file);
void writeBytes(const std::filesystem::path& file, std::string_view bytes);

/// Runs statements on a database file as another program would, past the library. The answer is what they
/// yield: columns parted by '|', absent values as "-", rows by a blank.
std::string runSQL(const std::filesystem::path& file, const std::string& statements);

/// While it lives, this thread must keep to the permissions of files and folders, even for the superuser.
class PermissionsBind {
  public:
    PermissionsBind();
    ~PermissionsBind();
    PermissionsBind(const PermissionsBind&) = delete;
    PermissionsBind& operator=(const PermissionsBind&) = delete;

  private:
    unsigned effective_;
};

}  // namespace orvane::test
