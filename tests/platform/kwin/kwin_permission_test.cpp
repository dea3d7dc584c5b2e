#include "platform/linux/kwin/kwin_permission.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <fstream>

namespace orvane {
namespace {

TEST(KwinPermissionTest, ComesAndGoes) {
    const KwinPermission permission;
    for (const char* program : {"/usr/bin/orvane", "/home/a user's/ünder;(way)/orvane"}) {
        EXPECT_TRUE(permission.grant(program).isChanged);
        EXPECT_FALSE(permission.grant(program).isChanged);
        GKeyFile* file = g_key_file_new();
        ASSERT_TRUE(g_key_file_load_from_file(file, permission.file().c_str(), G_KEY_FILE_NONE, nullptr));
        char* command = g_key_file_get_string(file, "Desktop Entry", "Exec", nullptr);
        int count = 0;
        char** words = nullptr;
        ASSERT_TRUE(g_shell_parse_argv(command, &count, &words, nullptr)) << command;
        ASSERT_EQ(count, 1);
        EXPECT_STREQ(words[0], program);
        g_strfreev(words);
        g_free(command);
        g_key_file_free(file);
    }
    // What KWin would not find is not written, and not over what it finds.
    for (const char* path :
         {"/50%/orvane", "/$x/orvane", "/`x/orvane", "/a\"b/orvane", "/a\\b/orvane", "/\n"}) {
        EXPECT_NE(permission.grant(path).problem, "") << path;
    }
    EXPECT_FALSE(permission.grant("/home/a user's/ünder;(way)/orvane").isChanged);
    EXPECT_TRUE(permission.withdraw().isChanged);
    EXPECT_FALSE(std::filesystem::exists(permission.file()));
    EXPECT_FALSE(permission.withdraw().isChanged);
}

TEST(KwinPermissionTest, AnotherEntryIsLeftAlone) {
    const KwinPermission permission;
    std::filesystem::create_directories(permission.file().parent_path());
    const std::string mine = "[Desktop Entry]\nType=Application\nName=Mine\nExec=orvane\n";
    std::ofstream(permission.file()) << mine;
    EXPECT_NE(permission.grant("/usr/bin/orvane").problem, "");
    EXPECT_NE(permission.withdraw().problem, "");
    std::ifstream stream(permission.file());
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), mine);
    stream.close();
    std::filesystem::remove(permission.file());
}

}  // namespace
}  // namespace orvane
