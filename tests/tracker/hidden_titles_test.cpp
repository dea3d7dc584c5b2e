#include <gtest/gtest.h>

#include "tests/tracker/tracked_desk.h"

namespace orvane::test {
namespace {

Value::Array rule(Dictionary members) { return {std::move(members)}; }

class HiddenTitles : public testing::Test {
  protected:
    void setRules(const Value& rules) {
        desk_.desktop().userDefaults().setObject(rules, orvaneTitleRulesDefault);
    }
    /// Whether the title can be found in the log, or in any byte of the folder.
    bool isAnywhere(const std::string& title) const {
        for (const auto& entry : std::filesystem::directory_iterator(desk_.folder()))
            if (bytesOf(entry.path()).find(title) != std::string::npos) return true;
        return desk_.log().find(title) != std::string::npos;
    }

    TrackedDesk desk_;
};

TEST_F(HiddenTitles, ReachNeitherStoreNorLog) {
    setRules(Value::Array{Dictionary{{"application", "bank"}},
                          Dictionary{{"title", "secret"}, {"replacement", "(hidden)"}}});
    desk_.show("bank", "Account 1");
    desk_.tracker();
    desk_.pass(20);
    desk_.show("bank", "Account 2");
    desk_.pass(20);
    desk_.show("editor", "secret plan");
    desk_.pass(20);
    desk_.show("editor", "secret list");
    desk_.pass(20);
    desk_.show("editor", "notes");
    desk_.pass(20);
    // Titles that nobody can tell apart are one recording.
    EXPECT_EQ(desk_.recordings(), "bank  50 editor (hidden) 40 editor notes 10");
    EXPECT_TRUE(isAnywhere("notes"));
    for (const char* title : {"Account", "secret plan", "secret list"}) EXPECT_FALSE(isAnywhere(title));
    EXPECT_EQ((*desk_.tracker().currentWindow())[kCGWindowName], Value("notes"));
}

TEST_F(HiddenTitles, AccessibilityTellsNoMore) {
    desk_.desktop().accessibility().setProcessTrusted(true);
    desk_.desktop().accessibility().setFocusedWindows({{7, {true, "secret plan"}}});
    setRules(Value::Array{Dictionary{{"title", "secret"}}});
    desk_.show("editor", "");
    desk_.tracker();
    desk_.pass(10);
    EXPECT_EQ(desk_.recordings(), "editor  10");
    EXPECT_FALSE(isAnywhere("secret"));
}

TEST_F(HiddenTitles, NewRulesApplyToTheWindowInFrontAtOnce) {
    desk_.show("editor", "secret plan");
    desk_.tracker();
    desk_.pass(15);
    setRules(rule({{"title", "secret"}, {"replacement", "-"}}));
    EXPECT_EQ(desk_.recordings(), "editor secret plan 15 editor - 0");
    desk_.pass(20);
    setRules({});
    desk_.pass(10);
    EXPECT_EQ(desk_.recordings(), "editor secret plan 15 editor - 20 editor secret plan 10");

    // The host's rules come before those of the user.
    desk_.tracker().setTitleRules(*TitleRules::make({{{}, "plan", false, "host"}}));
    setRules(rule({{"title", "secret"}, {"replacement", "user"}}));
    desk_.pass(10);
    desk_.show("editor", "secret list");
    desk_.pass(10);
    EXPECT_TRUE(desk_.recordings().ends_with("editor host 20 editor user 0")) << desk_.recordings();
}

TEST_F(HiddenTitles, RulesThatCannotBeReadHideEverything) {
    setRules(rule({{"title", "(secret"}}));
    desk_.show("editor", "notes");
    desk_.tracker();
    desk_.pass(10);
    EXPECT_EQ(desk_.recordings(), "editor  10");
    EXPECT_NE(desk_.log().find("Every window title is left out. The title rule 1 has a pattern"),
              std::string::npos);
    setRules(rule({{"title", "(secret)"}}));
    desk_.pass(10);
    EXPECT_EQ(desk_.recordings(), "editor  10 editor notes 10");
}

TEST_F(HiddenTitles, NewRulesWakeNoTrackerThatRests) {
    desk_.show("editor", "notes");
    desk_.tracker();
    desk_.pass(10);
    desk_.tracker().willSleep(Notification{NSWorkspaceWillSleepNotification, nullptr, {}});
    setRules(rule({{"title", "secret"}}));
    desk_.pass(100);
    EXPECT_EQ(desk_.recordings(), "editor notes 10");
    EXPECT_EQ(desk_.desktop().runLoop().pendingRequestCount(), 0U);
}

// Another program deletes rows of a store that is tracked into.
TEST_F(HiddenTitles, ARecordingThatIsDeletedElsewhereStaysSoAndWhatGoesOnIsRecordedAnew) {
    desk_.show("editor", "notes");
    desk_.tracker();
    desk_.pass(30);
    EXPECT_EQ(desk_.recordings(), "editor notes 30");
    runSQL(desk_.folder() / "Orvaning.db", "DELETE FROM Recording; DELETE FROM Application");
    desk_.pass(10);
    EXPECT_EQ(desk_.recordings(), "editor notes 0");
    desk_.pass(20);
    EXPECT_EQ(desk_.recordings(), "editor notes 20");
}

}  // namespace
}  // namespace orvane::test
