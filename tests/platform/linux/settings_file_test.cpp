#include "platform/linux/settings_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "desktop_fixture.h"
#include "platform/file_manager.h"

namespace orvane::testing {
namespace {

namespace fs = std::filesystem;

class SettingsFileTest : public ::testing::Test {
  protected:
    /// Binds the key and keeps every value that is told.
    std::shared_ptr<void> record(SettingsFile& settings, std::string_view key) {
        return settings.bind(key, [this](const Value& value) { told_.push_back(value); });
    }
    static mode_t modeOf(const fs::path& path) {
        struct stat status {};
        return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
    }

    fs::path folder_ = freshFolder("config") / "orvane";
    fs::path file_ = folder_ / "settings.json";
    LogLines log_;
    std::vector<Value> told_;
};

TEST_F(SettingsFileTest, ReadingLeavesNoTraceAndWritingKeepsWhatItDoesNotKnow) {
    SettingsFile settings(file_, log_);
    EXPECT_TRUE(settings.objectForKey("OrvaneEnabled").isNone());
    EXPECT_FALSE(fs::exists(folder_));

    ASSERT_TRUE(settings.setObject(true, "OrvaneEnabled", nullptr));
    EXPECT_EQ(modeOf(folder_), 0700U);
    EXPECT_EQ(modeOf(file_), 0600U);

    writeFile(file_, R"({"z": {"list": [1, null, 18446744073709551615]}, "a": "ü", "OrvaneEnabled": true})");
    EXPECT_EQ(settings.objectForKey("a"), Value("ü"));
    ASSERT_TRUE(settings.setObject(2.5, "idle", nullptr));
    ASSERT_TRUE(settings.setObject({}, "OrvaneEnabled", nullptr));
    EXPECT_EQ(
        readFile(file_),
        "{\n    \"z\": {\n        \"list\": [\n            1,\n            null,\n"
        "            18446744073709551615\n        ]\n    },\n    \"a\": \"ü\",\n    \"idle\": 2.5\n}\n");

    Error error;
    EXPECT_FALSE(settings.setObject(Date(), "date", &error));
    EXPECT_EQ(error.domain(), fileErrorDomain);
    EXPECT_TRUE(settings.objectForKey("date").isNone());
    EXPECT_TRUE(log_.lines.empty());
}

TEST_F(SettingsFileTest, ReplacesTheFileAsAWholeAndThroughALink) {
    const fs::path real = freshFolder("dotfiles") / "mine.json";
    writeFile(real, R"({"a": 1})");
    fs::create_directories(folder_);
    fs::create_symlink(real, file_);
    const int old = open(real.c_str(), O_RDONLY | O_CLOEXEC);

    SettingsFile settings(file_, log_);
    SettingsFile other(file_, log_);
    ASSERT_TRUE(settings.setObject(2, "b", nullptr));
    ASSERT_TRUE(other.setObject(3, "c", nullptr));
    EXPECT_EQ(settings.objectForKey("a"), Value(1));
    EXPECT_EQ(settings.objectForKey("b"), Value(2));
    EXPECT_EQ(settings.objectForKey("c"), Value(3)) << "both writers' keys";
    EXPECT_TRUE(fs::is_symlink(file_));
    EXPECT_EQ(std::distance(fs::directory_iterator(real.parent_path()), fs::directory_iterator()), 1);

    // Who had the file open still sees one whole state.
    char text[32];
    const ssize_t size = read(old, text, sizeof text);
    EXPECT_EQ(std::string(text, static_cast<std::size_t>(size)), R"({"a": 1})");
    close(old);

    // The file behind the link is watched too.
    const auto token = record(settings, "a");
    writeFile(real, R"({"a": 9})");
    EXPECT_TRUE(runUntil([&] { return told_.size() == 2; }));
    EXPECT_EQ(told_.back(), Value(9));
}

TEST_F(SettingsFileTest, TellsWhatOthersChange) {
    SettingsFile settings(file_, log_);
    const auto token = record(settings, "OrvaneEnabled");
    EXPECT_EQ(told_, std::vector<Value>{Value()});
    const auto expectNext = [&](const Value& value) {
        const auto count = told_.size() + 1;
        ASSERT_TRUE(runUntil([&] { return told_.size() >= count; }));
        EXPECT_EQ(told_.size(), count);
        EXPECT_EQ(told_.back(), value);
    };

    SettingsFile other(file_, log_);
    ASSERT_TRUE(other.setObject(true, "OrvaneEnabled", nullptr));
    expectNext(true);
    writeFile(file_, R"({"OrvaneEnabled": false})");  // as an editor that writes in place
    expectNext(false);
    fs::remove(file_);
    expectNext({});
    writeFile(fixtureRoot() / "new.json", R"({"OrvaneEnabled": true})");
    fs::rename(fixtureRoot() / "new.json", file_);
    expectNext(true);
    fs::remove_all(folder_);
    expectNext({});
    // The folder was made again, and is watched.
    writeFile(file_, R"({"OrvaneEnabled": 5})");
    expectNext(5);
    EXPECT_TRUE(log_.lines.empty());
}

TEST_F(SettingsFileTest, LeavesABrokenFileAlone) {
    writeFile(file_, R"({"OrvaneEnabled": true})");
    SettingsFile settings(file_, log_);
    const auto token = record(settings, "OrvaneEnabled");

    const std::string tooDeep = std::string(100000, '[') + std::string(100000, ']');
    for (const std::string& broken :
         {std::string("{\"OrvaneEnabled\":\n false,"), std::string(), std::string("[1]"),
          std::string("{\"a\": 1e999}"), "{\"a\": " + tooDeep + "}"}) {
        log_.lines.clear();
        writeFile(file_, broken);
        ASSERT_TRUE(runUntil([&] { return !log_.lines.empty(); }));
        EXPECT_EQ(settings.objectForKey("OrvaneEnabled"), Value(true));
        Error error;
        EXPECT_FALSE(settings.setObject(false, "OrvaneEnabled", &error));
        EXPECT_EQ(error.code(), fileReadUnknownError);
        EXPECT_FALSE(settings.setObject(false, "OrvaneEnabled", nullptr));
        EXPECT_EQ(log_.lines.size(), 1U) << "told once";
        EXPECT_EQ(readFile(file_), broken);
    }
    EXPECT_EQ(told_.size(), 1U);
    writeFile(file_, R"({"OrvaneEnabled": false})");
    EXPECT_TRUE(runUntil([&] { return told_.size() == 2; }));
    EXPECT_TRUE(settings.setObject(true, "OrvaneEnabled", nullptr));
    EXPECT_EQ(told_.back(), Value(true));
}

TEST_F(SettingsFileTest, HandlersMayEndBindingsAndSetValues) {
    auto settings = std::make_unique<SettingsFile>(file_, log_);
    std::vector<std::string> order;
    std::shared_ptr<void> ended;
    std::shared_ptr<void> second;
    ended = settings->bind("a", [&](const Value& value) {
        order.push_back("first " + value.description());
        if (value.isNone()) return;
        ended.reset();
        second.reset();
        settings->setObject(value.integerValue() + 1, "b", nullptr);
    });
    second = settings->bind("a", [&](const Value&) { order.push_back("second"); });
    auto third =
        settings->bind("b", [&](const Value& value) { order.push_back("third " + value.description()); });
    order.clear();
    settings->setObject(1, "a", nullptr);
    EXPECT_EQ(order, (std::vector<std::string>{"first 1", "third 2"}));
    settings->setObject(2.0, "b", nullptr);
    settings->setObject(7, "a", nullptr);
    EXPECT_EQ(order.size(), 2U) << "an equal value is no change, and ended bindings stay quiet";
    settings.reset();
    third.reset();
}

}  // namespace
}  // namespace orvane::testing
