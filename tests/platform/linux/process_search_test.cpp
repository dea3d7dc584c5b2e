#include "platform/linux/process_search.h"

#include <gtest/gtest.h>

#include "desktop_fixture.h"

namespace orvane::testing {
namespace {

TEST(ProcessSearch, FindsTheOneProcessOfAnApplication) {
    const auto proc = freshFolder("search-proc");
    const ProcessSearch search(proc);
    addProcess(proc, 10, {"/usr/bin/bash", {"bash"}});
    addProcess(proc, 11, {"/opt/viewer/viewer", {"viewer"}, 10});
    addProcess(proc, 12, {"/opt/viewer/viewer", {"viewer", "--render"}, 11});
    addProcess(proc, 13, {"/usr/bin/foot", {"foot"}});
    addProcess(proc, 14, {"/usr/bin/foot", {"foot"}});
    addProcess(proc, 15,
               {.executable = "/app/bin/run",
                .command = {"run"},
                .flatpakInfo = "[Application]\nname=org.example.Boxed\n"});
    addProcess(
        proc, 16,
        {.executable = "/usr/bin/launch", .command = {"launch"}, .unit = "app-org.example.Unit-16.scope"});
    addProcess(proc, 17,
               {.executable = "/usr/bin/less",
                .command = {"less"},
                .hasTerminal = true,
                .unit = "app-org.example.Term-17.scope"});
    EXPECT_EQ(search.find("viewer"), 11) << "its child does not count";
    EXPECT_EQ(search.find("org.example.Viewer"), 11);
    EXPECT_EQ(search.find("foot"), 0) << "which of the two?";
    EXPECT_EQ(search.find("org.example.Boxed"), 15);
    EXPECT_EQ(search.find("org.example.Unit"), 16);
    EXPECT_EQ(search.find("org.example.Term"), 0) << "what runs inside a terminal";
    EXPECT_EQ(search.find("iew"), 0);
    EXPECT_EQ(search.find(""), 0);
}

}  // namespace
}  // namespace orvane::testing
