#include <gtest/gtest.h>

#include "tests/host/program.h"
#include "tests/persistence/temporary_folder.h"

namespace orvane::test {
namespace {

ProgramRun run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "privacy");
    return runProgram(arguments);
}

TEST(PrivacyCommand, KeepsRulesInTheSettings) {
    EXPECT_EQ(run({"--json"}).json(), nlohmann::json::array());
    EXPECT_EQ(
        run({"add", "--app", "org.bank", "--replace", "Bank"}).output,
        "From now on, titles of org.bank are recorded as \"Bank\". What was recorded before stays; `orvane "
        "forget` deletes it.\n");
    EXPECT_EQ(run({"add", "--private-windows", "--title", "x+"}).status, 0);
    EXPECT_EQ(run({"add", "--all", "--json"}).json()["replacement"], nullptr);
    EXPECT_EQ(run({}).output,
              "1  titles of org.bank are recorded as \"Bank\"\n"
              "2  titles of private windows in which \"x+\" is found are left out\n"
              "3  all titles are left out\n");
    EXPECT_EQ(run({"test", "org.bank", "Account"}).output, "Rule 1 records \"Bank\" instead.\n");
    EXPECT_EQ(run({"test", "org.other", "Account"}).output, "Rule 3 leaves this title out.\n");
    EXPECT_EQ(run({"remove", "3"}).output, "Removed the rule that all titles are left out.\n");
    EXPECT_EQ(run({"test", "org.other", "Account", "--json"}).json(),
              nlohmann::json::parse(R"({"recorded": "Account", "rule": null})"));
    EXPECT_EQ(runProgram({"enable"}).status, 0);
    EXPECT_EQ(run({"--json"}).json().size(), 2U);

    for (const auto& [arguments, told] :
         {std::pair<std::vector<std::string>, const char*>{{"add"}, "name the titles to hide"},
          {{"add", "--title", "(a"}, "\n  (a\n    ^ missing "},
          {{"remove", "3"}, "there is no rule 3"},
          {{"remove", "0"}, "there is no rule 0"}}) {
        const ProgramRun refused = run(arguments);
        EXPECT_EQ(refused.status, 2);
        EXPECT_NE(refused.errors.find(told), std::string::npos) << refused.errors;
    }
    EXPECT_EQ(run({"--json"}).json().size(), 2U);
    EXPECT_EQ(run({"remove", "1"}).status + run({"remove", "1"}).status, 0);
}

TEST(PrivacyCommand, DoesNotTouchRulesThatItCannotRead) {
    const std::string settings = std::string(std::getenv("XDG_CONFIG_HOME")) + "/orvane/settings.json";
    std::filesystem::create_directories(std::filesystem::path(settings).parent_path());
    const std::string text = R"({"OrvaneTitleRules": [{"title": "("}]})";
    writeBytes(settings, text);
    for (const auto& arguments : {std::vector<std::string>{}, {"add", "--all"}, {"remove", "1"}}) {
        const ProgramRun refused = run(arguments);
        EXPECT_EQ(refused.status, 1);
        EXPECT_NE(refused.errors.find("no title is recorded"), std::string::npos) << refused.errors;
    }
    EXPECT_NE(runProgram({"doctor"}).output.find("no title is recorded"), std::string::npos);
    EXPECT_EQ(bytesOf(settings), text);
    std::filesystem::remove(settings);
}

}  // namespace
}  // namespace orvane::test
