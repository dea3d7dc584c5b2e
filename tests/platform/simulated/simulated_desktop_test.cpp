#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "platform/simulated/simulated_platform.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

class SimulatedDesktop : public testing::Test {
  protected:
    std::string windowName(std::size_t index) {
        const auto identifiers = platform_.windowServer().windowListCreate(17, 0);
        const auto windows = platform_.windowServer().windowListCreateDescriptionFromArray(identifiers);
        const Value name = windows.at(index)[kCGWindowName];
        return name.asString() ? *name.asString() : "";
    }

    SimulatedPlatform platform_;
};

TEST_F(SimulatedDesktop, WindowsKeepTheirNumbersAndGetMissingOnes) {
    auto& server = platform_.windowServer();
    server.setWindows({{{kCGWindowName, "a"}},
                       {{kCGWindowName, "b"}, {kCGWindowNumber, 1}},
                       {{kCGWindowName, "c"}, {kCGWindowNumber, 1}},
                       {{kCGWindowName, "d"}, {kCGWindowNumber, "no number"}}});
    const auto identifiers = server.windowListCreate(17, 0);
    const auto windows = server.windowListCreateDescriptionFromArray(identifiers);
    ASSERT_EQ(windows.size(), 4u);
    EXPECT_EQ(windows[0][kCGWindowNumber], Value(2));
    EXPECT_EQ(windows[1][kCGWindowNumber], Value(1));
    EXPECT_EQ(windows[3][kCGWindowNumber], Value("no number"));
    EXPECT_EQ(windowName(0) + windowName(1) + windowName(2) + windowName(3), "abcd");

    const std::vector<WindowIdentifier> some = {identifiers[3], 999, identifiers[1]};
    const auto described = server.windowListCreateDescriptionFromArray(some);
    ASSERT_EQ(described.size(), 2u);
    EXPECT_EQ(described[0][kCGWindowName], Value("d"));
}

TEST_F(SimulatedDesktop, SecondsSinceInputCountFromTheLastOne) {
    auto& server = platform_.windowServer();
    const auto idle = [&] {
        return server.secondsSinceLastEventType(kCGEventSourceStateCombinedSessionState,
                                                kCGAnyInputEventType);
    };
    platform_.runLoop().advanceTo(std::chrono::milliseconds(2500));
    EXPECT_EQ(idle(), 2.5);
    server.noteInput();
    EXPECT_EQ(idle(), 0.0);
    server.setTimeSinceLastInput(std::chrono::milliseconds(120500));
    platform_.clock().stepWallTime(std::chrono::hours(-1));
    platform_.runLoop().advanceTo(std::chrono::milliseconds(3000));
    EXPECT_EQ(idle(), 121.0);
}

TEST_F(SimulatedDesktop, FocusedWindowsCanBeMissingUntitledOrUnreadable) {
    auto& accessibility = platform_.accessibility();
    accessibility.setFocusedWindows({{1, {true, "title"}}, {2, {}}, {3, {true, std::nullopt}}});
    const auto window = [&](std::int32_t process) {
        AccessibilityValue value;
        const int status = accessibility.createApplication(process)->copyAttributeValue(
            NSAccessibilityFocusedWindowAttribute, value);
        auto* element = std::get_if<std::shared_ptr<AccessibilityElement>>(&value);
        EXPECT_EQ(status == 0, element != nullptr);
        return element ? *element : nullptr;
    };
    AccessibilityValue title;
    ASSERT_EQ(window(1)->copyAttributeValue(kAXTitleAttribute, title), 0);
    EXPECT_EQ(std::get<std::string>(title), "title");
    EXPECT_TRUE(window(2)->copyAttributeNames().empty());
    EXPECT_EQ(window(3)->copyAttributeNames(), std::vector<std::string>{kAXTitleAttribute});
    AccessibilityValue none;
    EXPECT_NE(window(3)->copyAttributeValue(kAXTitleAttribute, none), 0);
    EXPECT_TRUE(std::holds_alternative<std::monostate>(none));
    EXPECT_EQ(window(4), nullptr);
}

TEST_F(SimulatedDesktop, ApplicationsAnswerEachLookupByItself) {
    const Image icon{32, 32, std::vector<std::uint8_t>(4096, 9)};
    platform_.workspace().setApplications({{"a", {"/apps/A", "/bundles/A", "Name of A", icon}},
                                           {"b", {std::nullopt, "/bundles/B", std::nullopt, icon}}});
    auto& workspace = platform_.workspace();
    auto& files = platform_.fileManager();
    EXPECT_EQ(workspace.URLForApplicationWithBundleIdentifier("a"), fs::path("/apps/A"));
    EXPECT_EQ(workspace.URLForApplicationWithBundleIdentifier("b"), std::nullopt);
    EXPECT_EQ(workspace.absolutePathForAppBundleWithIdentifier("b"), "/bundles/B");
    EXPECT_EQ(workspace.iconForFile("/apps/A").pixels.size(), 4096u);
    EXPECT_TRUE(workspace.iconForFile("/bundles/B").pixels.empty());
    EXPECT_EQ(files.bundleInformation("/bundles/A", "CFBundleName"), Value("Name of A"));
    EXPECT_TRUE(files.bundleInformation("/bundles/A", "CFBundleVersion").isNone());
    EXPECT_TRUE(files.bundleInformation("/bundles/B", "CFBundleName").isNone());
    EXPECT_TRUE(files.bundleInformation("/apps/A", "CFBundleName").isNone());
}

TEST_F(SimulatedDesktop, UserDefaultsDeliverEveryChangeInOrder) {
    auto& defaults = platform_.userDefaults();
    std::vector<std::string> told;
    const auto tell = [&](const std::string& who) {
        return [&told, who](const Value& value) { told.push_back(who + value.description()); };
    };
    auto first = defaults.bind("key", [&](const Value& value) {
        tell("1:")(value);
        if (value == Value(1)) defaults.setObject(2, "key");
    });
    auto second = defaults.bind("key", tell("2:"));
    auto other = defaults.bind("other", tell("other:"));
    told.clear();

    defaults.setObject(1, "key");
    EXPECT_EQ(told, (std::vector<std::string>{"1:1", "2:1", "1:2", "2:2"}));
    told.clear();
    defaults.setObject(2.0, "key");
    EXPECT_TRUE(told.empty());
    first.reset();
    defaults.setObject({}, "key");
    EXPECT_EQ(told.size(), 1u);
    EXPECT_TRUE(defaults.objectForKey("key").isNone());
    defaults.setObject({}, "key");
    EXPECT_EQ(told.size(), 1u);
}

class SimulatedFiles : public SimulatedDesktop {
  protected:
    void SetUp() override {
        std::string pattern = fs::temp_directory_path() / "orvane-files-XXXXXX";
        folder_ = mkdtemp(pattern.data());
    }
    void TearDown() override { fs::remove_all(folder_); }

    fs::path folder_;
    SimulatedFileManager& files_ = platform_.fileManager();
};

TEST_F(SimulatedFiles, FoldersAreMadeForTheUserAlone) {
    EXPECT_TRUE(files_.applicationSupportDirectories().empty());
    files_.setApplicationSupportDirectory(folder_);
    EXPECT_EQ(files_.applicationSupportDirectories(), std::vector<fs::path>{folder_});

    Error error;
    const fs::path deep = folder_ / "a" / "b/";
    EXPECT_EQ(files_.isDirectory(deep, &error), std::nullopt);
    EXPECT_EQ(error.code(), fileReadNoSuchFileError);
    ASSERT_TRUE(files_.createDirectory(deep, &error));
    EXPECT_EQ(files_.isDirectory(deep, &error), true);
    EXPECT_TRUE(files_.createDirectory(deep, &error));
    struct stat status;
    ASSERT_EQ(stat((folder_ / "a").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0700u);
}

TEST_F(SimulatedFiles, WhatStandsInTheWayIsToldByItsCode) {
    std::ofstream(folder_ / "file") << "content";
    fs::create_symlink(folder_ / "nowhere", folder_ / "link");
    Error error;
    EXPECT_EQ(files_.isDirectory(folder_ / "file", &error), false);
    EXPECT_FALSE(files_.createDirectory(folder_ / "file", &error));
    EXPECT_EQ(error.code(), fileWriteFileExistsError);
    EXPECT_FALSE(files_.createDirectory(folder_ / "file" / "below", &error));
    EXPECT_EQ(error.code(), fileWriteFileExistsError);
    EXPECT_FALSE(files_.createDirectory(folder_ / "link", &error));
    EXPECT_EQ(error.domain(), fileErrorDomain);
    EXPECT_EQ(files_.isDirectory(folder_ / std::string(300, 'n'), &error), std::nullopt);
    EXPECT_EQ(error.code(), fileReadUnknownError);
    // Taken as text up to the zero byte, this would be the folder itself.
    EXPECT_EQ(files_.isDirectory(fs::path(folder_.string() + std::string("\0x", 2)), &error), std::nullopt);
}

TEST_F(SimulatedFiles, ResourcesComeFromTheFolderThatWasSet) {
    files_.setResourceDirectory(folder_);
    EXPECT_EQ(files_.URLForResource("Orvane", "momd"), std::nullopt);
    fs::create_directory(folder_ / "Orvane.momd");
    EXPECT_EQ(files_.URLForResource("Orvane", "momd"), folder_ / "Orvane.momd");
}

}  // namespace
}  // namespace orvane
