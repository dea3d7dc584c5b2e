#include "platform/linux/linux_file_manager.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include "desktop_fixture.h"
#include "platform/linux/random_uuid_source.h"
#include "platform/linux/xdg_folders.h"

namespace orvane::testing {
namespace {

namespace fs = std::filesystem;

TEST(LinuxFileManagerTest, TellsWhyAFolderIsNotThere) {
    LinuxFileManager files;
    const fs::path folder = freshFolder("files");
    writeFile(folder / "file", "");
    Error error;
    EXPECT_EQ(files.isDirectory(folder, &error), true);
    EXPECT_EQ(files.isDirectory(folder / "file", &error), false);
    EXPECT_FALSE(error);
    EXPECT_EQ(files.isDirectory(folder / "absent", &error), std::nullopt);
    EXPECT_EQ(error.code(), fileReadNoSuchFileError);
    EXPECT_EQ(files.isDirectory(folder / "file/x", &error), std::nullopt);
    EXPECT_EQ(error.code(), fileReadNoSuchFileError);

    EXPECT_TRUE(files.createDirectory(folder / "a/b/c/", nullptr));
    for (const char* made : {"a", "a/b", "a/b/c"}) {
        struct stat status {};
        ASSERT_EQ(stat((folder / made).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0700U) << made;
    }
    EXPECT_TRUE(files.createDirectory(folder / "a", nullptr));
    for (const char* blocked : {"file", "file/x"}) {
        EXPECT_FALSE(files.createDirectory(folder / blocked, &error));
        EXPECT_EQ(error.code(), fileWriteFileExistsError) << blocked;
    }
    EXPECT_EQ(fileWriteError(folder, ENOSPC).code(), fileWriteOutOfSpaceError);
    EXPECT_EQ(fileWriteError(folder, EROFS).code(), fileWriteVolumeReadOnlyError);
    EXPECT_EQ(fileWriteError(folder, EACCES).code(), fileWriteNoPermissionError);
    EXPECT_EQ(fileReadError(folder, EACCES).code(), fileReadNoPermissionError);
    EXPECT_EQ(fileReadError(folder, EIO).code(), fileReadUnknownError);
}

TEST(LinuxFileManagerTest, ReadsBundlesAndFindsFoldersAndResources) {
    LinuxFileManager files;
    installEntry("kde/org.example.Named", "Name[de]=Benannt\nExec=editor\n");
    const std::string entry = fixtureRoot() / "data/applications/kde/org.example.Named.desktop";
    for (const std::string& bundle : {entry, fs::path(entry).parent_path().string()}) {
        EXPECT_EQ(files.bundleInformation(bundle, "CFBundleName"), Value("Name of kde/org.example.Named"));
        EXPECT_EQ(files.bundleInformation(bundle, "CFBundleIdentifier"), Value("kde-org.example.Named"));
        EXPECT_TRUE(files.bundleInformation(bundle, "CFBundleVersion").isNone());
    }
    setenv("LANGUAGE", "de", 1);
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    EXPECT_EQ(files.bundleInformation(entry, "CFBundleName"), Value("Benannt"));
    unsetenv("LANGUAGE");
    setenv("LC_ALL", "C.UTF-8", 1);
    writeFile(fs::path(entry).parent_path() / "second.desktop", "[Desktop Entry]\nName=Second\n");
    EXPECT_TRUE(files.bundleInformation(fs::path(entry).parent_path().string(), "CFBundleName").isNone());
    EXPECT_TRUE(files.bundleInformation("/absent", "CFBundleName").isNone());

    const fs::path resources = freshFolder("resources");
    setenv("ORVANE_RESOURCES", resources.c_str(), 1);
    EXPECT_EQ(files.URLForResource("NoSuch", "thing"), std::nullopt);
    writeFile(resources / "Own.momd", "");
    EXPECT_EQ(files.URLForResource("Own", "momd"), resources / "Own.momd");
    unsetenv("ORVANE_RESOURCES");

    EXPECT_EQ(files.applicationSupportDirectories().back(), fixtureRoot() / "data");
    setenv("XDG_DATA_HOME", "relative/path", 1);
    EXPECT_EQ(files.applicationSupportDirectories().back(), homeFolder() / ".local/share");
    setenv("XDG_DATA_HOME", (fixtureRoot() / "data").c_str(), 1);
}

TEST(RandomUuidSourceTest, FollowsTheLayoutAndDiffers) {
    RandomUuidSource source;
    auto last = source.next();
    for (int i = 0; i < 64; ++i) {
        const auto next = source.next();
        EXPECT_EQ(next[6] & 0xF0, 0x40);
        EXPECT_EQ(next[8] & 0xC0, 0x80);
        EXPECT_NE(next, last);
        last = next;
    }
}

}  // namespace
}  // namespace orvane::testing
