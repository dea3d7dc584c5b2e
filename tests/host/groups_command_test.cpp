#include <gtest/gtest.h>
#include <sqlite3.h>

#include "tests/host/program.h"
#include "tests/persistence/temporary_folder.h"

namespace orvane::test {
namespace {

constexpr const char* filled = R"({"type":"export","version":1}
{"type":"group","number":1,"identifier":"G-1","name":"Work","color":"3584e4ff","category":"c"}
{"type":"group","number":2,"identifier":"G-2","name":"Play"}
{"type":"group","number":3,"identifier":"G-3","name":"Play"}
{"type":"application","number":1,"identifier":"org.a.Editor","name":"Editor","group":1}
{"type":"application","number":2,"identifier":"org.b.Editor","name":"Editor"}
{"type":"application","number":3,"identifier":"org.Mail","name":"Mail"}
{"type":"application","number":4,"identifier":"twin","name":"One"}
{"type":"application","number":5,"identifier":"twin","name":"Two"}
{"type":"recording","start":0,"end":3600.5,"application":1}
{"type":"recording","start":3601,"end":3604,"application":3}
)";

class GroupsCommand : public testing::Test {
  protected:
    void fill() {
        writeBytes(folder_ / "filled.jsonl", filled);
        ASSERT_EQ(run({"import", folder_ / "filled.jsonl"}).status, 0);
    }
    ProgramRun run(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--store", folder_ / "store"});
        return runProgram(arguments);
    }
    /// "NAME COLOR: IDENTIFIER…" of each group.
    std::string groups() {
        std::string result;
        for (const auto& group : run({"groups", "--json"}).json()) {
            result += (result.empty() ? "" : "; ") + group["name"].get<std::string>() + " " +
                      (group["color"].is_null() ? "-" : group["color"].get<std::string>()) + ":";
            for (const auto& app : group["applications"])
                result += " " + app["identifier"].get<std::string>();
        }
        return result;
    }
    /// The groups are as they were, and the message holds the text.
    void expectRefusal(const std::vector<std::string>& arguments, const std::string& message) {
        SCOPED_TRACE(message);
        const std::string before = groups();
        const ProgramRun refused = run(arguments);
        EXPECT_EQ(refused.status, 2);
        EXPECT_EQ(refused.output, "");
        EXPECT_NE(refused.errors.find(message), std::string::npos) << refused.errors;
        EXPECT_EQ(groups(), before);
    }

    TemporaryFolder folder_;
};

TEST_F(GroupsCommand, EditsGroups) {
    EXPECT_EQ(run({"groups"}).output, "There are no groups yet. `orvane groups add NAME` makes one.\n");
    EXPECT_FALSE(std::filesystem::exists(folder_ / "store"));

    const auto added = run({"groups", "add", "Déjà vu", "--color", "#AABBCC", "--json"}).json();
    EXPECT_EQ(added["name"], "Déjà vu");
    EXPECT_EQ(added["color"], "aabbccff");
    EXPECT_EQ(added["category"], nullptr);
    EXPECT_EQ(added["disabled"], false);
    const std::string identifier = added["identifier"];
    EXPECT_EQ(identifier.size(), 36U);

    EXPECT_EQ(run({"groups", "rename", identifier, "Vu"}).output,
              "The group \"Déjà vu\" is called \"Vu\" now.\n");
    EXPECT_EQ(run({"groups", "color", "vu", "01020380"}).status, 0);
    EXPECT_EQ(groups(), "Vu 01020380:");
    fill();
    EXPECT_EQ(groups(), "Vu 01020380:; Work 3584e4ff: org.a.Editor; Play -:; Play -:");

    // The longest used first; twins are one application.
    EXPECT_EQ(run({"groups", "assign", "Work", "MAIL", "twin", "org.b.editor"}).status, 0);
    EXPECT_EQ(run({"groups", "assign", "G-3", "org.a.Editor", "org.a.Editor"}).status, 0);
    EXPECT_EQ(groups(),
              "Vu 01020380:; Work 3584e4ff: org.Mail org.b.Editor twin twin; Play -:; "
              "Play -: org.a.Editor");
    EXPECT_EQ(run({"groups", "unassign", "mail", "One"}).output, "Took 2 applications out of the groups.\n");
    EXPECT_EQ(run({"groups", "remove", "G-3"}).output,
              "Removed the group \"Play\". Without a group now: 1 application.\n");
    EXPECT_EQ(groups(), "Vu 01020380:; Work 3584e4ff: org.b.Editor twin; Play -:");
    EXPECT_EQ(run({"apps", "--json"}).json().size(), 5U);
    EXPECT_EQ(run({"export"}).output.find("\"group\":3"), std::string::npos);
}

TEST_F(GroupsCommand, ListsTimes) {
    fill();
    EXPECT_EQ(run({"groups"}).output,
              "  GROUP        TIME  COLOUR    IDENTIFIER\n"
              "  Work      1:00:00  3584e4ff  G-1\n"
              "    Editor  1:00:00  -         org.a.Editor\n"
              "  Play         0:00  -         G-2\n"
              "  Play         0:00  -         G-3\n");
    const auto work = run({"groups", "--json"}).json()[0];
    EXPECT_EQ(work["duration"], "3600.500000");
    EXPECT_EQ(work["category"], "c");
}

TEST_F(GroupsCommand, RefusesWrongNames) {
    expectRefusal({"groups", "remove", "Work"}, "there is no group \"Work\".");
    fill();
    expectRefusal({"groups", "add", "Work"}, "there is a group \"Work\" already");
    expectRefusal({"groups", "add", " \t"}, "a group needs a name");
    expectRefusal({"groups", "add", "New", "--color", "blue"}, "\"blue\" is no colour");
    expectRefusal({"groups", "add", "New", "--color", "#12345"}, "is no colour");
    expectRefusal({"groups", "color", "Work", "3584e4f"}, "is no colour");
    expectRefusal({"groups", "rename", "Work", "Play"}, "there is a group \"Play\" already");
    expectRefusal({"groups", "rename", "Wrok", "New"}, "there is no group \"Wrok\". Did you mean \"Work\"?");
    expectRefusal({"groups", "remove", "Play"},
                  "\"Play\" may be any of G-2 (Play), G-3 (Play). Name the one you mean by its identifier.");
    expectRefusal({"groups", "assign", "Work", "org.Mail", "editor"},
                  "\"editor\" may be any of org.a.Editor (Editor), org.b.Editor (Editor).");
    expectRefusal({"groups", "assign", "Work", "org.Mail", "mial"},
                  "there is no application \"mial\". Did you mean \"Mail\"?");
    expectRefusal({"groups", "unassign", "org.a.Editor", ""}, "there is no application \"\"");
    expectRefusal({"groups", "assign", "Work"}, "APP");
    EXPECT_EQ(run({"groups", "rename", "Work", "Work"}).status, 0);
}

TEST_F(GroupsCommand, TellsThatTheStoreIsBusy) {
    fill();
    const std::string before = groups();
    // Another program in the middle of writing.
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open((folder_ / "store/Orvaning.db").c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    for (const auto& arguments :
         std::vector<std::vector<std::string>>{{"groups", "remove", "Work"}, {"groups", "add", "New"}}) {
        const ProgramRun busy = run(arguments);
        EXPECT_EQ(busy.status, 1);
        EXPECT_NE(busy.errors.find("is in use by another program"), std::string::npos) << busy.errors;
    }
    EXPECT_EQ(groups(), before);
    sqlite3_exec(other, "COMMIT; BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
    const ProgramRun locked = run({"groups"});
    EXPECT_EQ(locked.status, 1);
    EXPECT_NE(locked.errors.find("is in use by another program"), std::string::npos) << locked.errors;
    sqlite3_close(other);
}

}  // namespace
}  // namespace orvane::test
