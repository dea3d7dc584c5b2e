#include <gtest/gtest.h>
#include <sys/stat.h>

#include <set>
#include <sstream>

#include "persistence/sqlite/schema.h"
#include "tests/host/program.h"
#include "tests/persistence/temporary_folder.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* oneRecording = R"({"type":"export","version":1}
{"type":"application","number":1,"identifier":"org.a.Editor","name":"Editor"}
{"type":"recording","start":0,"end":3600,"application":1,"window":"a title"}
)";

unsigned modeOf(const fs::path& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777U : ~0U;
}

/// "name=mode" of all that lies in the folder, in order.
std::string modesIn(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        names.insert(fs::relative(entry.path(), folder));
    std::ostringstream result;
    for (const auto& name : names)
        result << (result.tellp() > 0 ? " " : "") << name << "=" << std::oct << modeOf(folder / name);
    return result.str();
}

class UmaskScope {
  public:
    explicit UmaskScope(mode_t mask) : before_(::umask(mask)) {}
    ~UmaskScope() { ::umask(before_); }
    UmaskScope(const UmaskScope&) = delete;
    UmaskScope& operator=(const UmaskScope&) = delete;

  private:
    mode_t before_;
};

TEST(Permissions, NothingIsForOthersWhateverTheUmask) {
    for (const char* mask : {"0", "022", "077", "0777"}) {
        SCOPED_TRACE(mask);
        const TemporaryFolder folder;
        writeBytes(folder / "one.jsonl", oneRecording);
        const ProgramRun run = runShell("umask " + std::string(mask) +
                                            R"(; export XDG_DATA_HOME="$1/data" XDG_CONFIG_HOME="$1/config"
                   "$0" import "$1/one.jsonl" && "$0" enable && "$0" export --output "$1/data/out.jsonl")",
                                        folder.path());
        ASSERT_EQ(run.status, 0) << run.errors;
        EXPECT_EQ(modesIn(folder / "data"),
                  "Orvane=700 Orvane/Orvaning.db=600 Orvane/tracker.lock=600 out.jsonl=600");
        EXPECT_EQ(modesIn(folder / "config"), "orvane=700 orvane/settings.json=600");
    }
}

TEST(Permissions, JournalsAreForTheUserAloneFromTheFirstByte) {
    const auto model =
        ManagedObjectModel::modelWithContentsOfURL(fs::path(ORVANE_SOURCE_DIR) / "store/Orvane.momd");
    for (const mode_t mask : {0000, 0777}) {
        const TemporaryFolder folder;
        const UmaskScope scope(mask);
        sqlite::PrepareOptions options;
        options.open.create = true;
        Error error;
        const auto store = sqlite::prepareStore(folder / "a.db", *model, options, &error);
        ASSERT_TRUE(store) << error.localizedDescription();
        sqlite::Transaction transaction(*store->database, sqlite::Transaction::Kind::write, &error);
        ASSERT_TRUE(store->database->execute("INSERT INTO \"_metadata\" VALUES ('a', 'b')", &error));
        EXPECT_EQ(modesIn(folder.path()), "a.db=600 a.db-journal=600");
    }
}

TEST(Permissions, WiderOnesAreNarrowed) {
    const TemporaryFolder folder;
    writeBytes(folder / "one.jsonl", oneRecording);
    const std::string widened = R"(; chmod 755 "$1/data/Orvane"; chmod 664 "$1/data/Orvane/Orvaning.db")";
    const std::string home = R"(export XDG_DATA_HOME="$1/data")";
    ASSERT_EQ(
        runShell(home + R"(; "$0" import "$1/one.jsonl")" + widened + R"(; "$0" apps)", folder.path()).status,
        0);
    EXPECT_EQ(modesIn(folder / "data"), "Orvane=700 Orvane/Orvaning.db=600 Orvane/tracker.lock=600");
    // A folder that was named may be shared on purpose; files in it are ours all the same.
    ASSERT_EQ(runShell(home + widened + R"(; "$0" apps --store "$1/data/Orvane")", folder.path()).status, 0);
    EXPECT_EQ(modesIn(folder / "data"), "Orvane=755 Orvane/Orvaning.db=600 Orvane/tracker.lock=600");
}

}  // namespace
}  // namespace orvane::test
