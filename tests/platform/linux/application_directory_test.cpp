#include "platform/linux/application_directory.h"

#include <gtest/gtest.h>

#include "desktop_fixture.h"

namespace orvane::testing {
namespace {

namespace fs = std::filesystem;

class ApplicationDirectoryTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        const std::string share = fixtureRoot() / "share";
        installEntry("org.example.Editor", "Exec=editor %F\n", "editor");
        installEntry("vendor-term", "Exec=term\nStartupWMClass=Term\n", "term");
        installEntry("a-top", "Exec=term -e top\n");
        installEntry("org.example.Viewer", "Exec=env LANG=C viewer --new %F\n", "viewer");
        installEntry("browser", "Exec=browser\nStartupWMClass=Browser\n", "browser");
        installEntry("webapp", "Exec=browser --app=x\nStartupWMClass=crx_abc\n");
        installEntry("tool", "Exec=python3 " + share + "/tool.py\n", "python3");
        installEntry("python", "Exec=python3\nTerminal=true\n");
        installEntry("wrapped", "Exec=wrapped\n", "wrapped");
        installEntry("org.example.Scoped-thing", "Exec=launch-it\n", "launch-it");
        installEntry("console", "Exec=console\n", "console");
        installEntry("org.example.Boxed", "Exec=editor\nX-Flatpak=org.example.Boxed\nStartupWMClass=Plain\n");
        installEntry("snappy_snappy", "Exec=editor\nX-SnapInstanceName=snappy\n");
        installEntry("com.one.Twin", "Exec=one\n", "one");
        installEntry("com.two.Twin", "Exec=two\n", "two");
        writeFile(fixtureRoot() / "share/tool.py", "");
        writeFile(fixtureRoot() / "work/tool.py", "");
    }

    static std::string bin(const std::string& name) { return fixtureRoot() / "bin" / name; }

    /// The identifier of a window whose process is this one.
    std::string identify(const FakeProcess& process, const std::string& windowClass,
                         const std::string& instance = {}, const std::string& gtkId = {}) {
        addProcess(proc_, ++lastProcess_, process);
        DesktopWindow window;
        window.processIdentifier = lastProcess_;
        window.windowClass = windowClass;
        window.windowInstance = instance;
        window.gtkApplicationId = gtkId;
        name_ = directory_.ownerName(window);
        return directory_.identify(window).value_or("(none)");
    }

    fs::path proc_ = freshFolder("proc");
    ApplicationDirectory directory_{proc_};
    int lastProcess_ = 100;
    std::optional<std::string> name_;
};

TEST_F(ApplicationDirectoryTest, WindowNamesLeadToTheEntry) {
    const FakeProcess other{"/opt/other", {"other"}};
    EXPECT_EQ(identify(other, "Whatever", "", "org.example.Editor"), "org.example.Editor");
    EXPECT_EQ(name_, "Name of org.example.Editor");
    EXPECT_EQ(identify(other, "TERM"), "vendor-term");
    EXPECT_EQ(identify(other, "Browser", "browser"), "browser");
    EXPECT_EQ(identify(other, "Browser", "crx_abc"), "webapp") << "the instance is the closer name";
    EXPECT_EQ(identify(other, "Viewer"), "org.example.Viewer");
    EXPECT_EQ(identify(other, "org.example.editor"), "org.example.Editor");
    // Two entries end in this name: only the program can tell.
    EXPECT_EQ(identify(other, "Twin"), "twin");
    EXPECT_EQ(identify({bin("two"), {"two"}}, "Twin"), "com.two.Twin");
    // Nothing fits.
    EXPECT_EQ(identify(other, "Some Thing"), "some thing");
    EXPECT_EQ(name_, "other");
    EXPECT_EQ(identify(other, "Whatever", "", "org.example.Unknown"), "org.example.Unknown");
}

TEST_F(ApplicationDirectoryTest, ProgramsLeadToTheEntry) {
    EXPECT_EQ(identify({bin("editor"), {"editor", "file"}}, "X"), "org.example.Editor");
    EXPECT_EQ(identify({bin("editor") + " (deleted)", {"editor"}}, "X"), "org.example.Editor");
    EXPECT_EQ(identify({"/usr/lib/viewer/viewer.bin", {"/usr/bin/viewer"}}, "X"), "org.example.Viewer")
        << "the program that a start script of the same name runs";
    EXPECT_EQ(identify({"", {bin("editor")}}, "X"), "org.example.Editor") << "another user's process";
    // The same program with and without the words that make it another application.
    EXPECT_EQ(identify({bin("term"), {"term"}}, "X"), "vendor-term");
    EXPECT_EQ(identify({bin("term"), {"term", "-e", "top"}}, "X"), "a-top");
    EXPECT_EQ(identify({bin("term"), {"term", "-e", "less"}}, "X"), "vendor-term");
}

TEST_F(ApplicationDirectoryTest, AnInterpreterStandsForItsScript) {
    const std::string script = fixtureRoot() / "share/tool.py";
    const std::string python = "/usr/bin/python3.11";
    EXPECT_EQ(identify({python, {"python3", "-E", "-W", "all", script, "x"}}, "X"), "tool");
    EXPECT_EQ(identify({python, {"python3", "tool.py"}}, "X"), "tool");
    EXPECT_EQ(identify({python, {"python3", "-c", "import tool"}}, "X"), "x");
    EXPECT_EQ(identify({python, {"python3", "/home/me/game.py"}}, ""), "game.py");
    EXPECT_EQ(name_, "game.py");
    // A program that a start script waits for, but not one that was started inside the same terminal.
    addProcess(proc_, 50, {"/bin/dash", {"/bin/sh", bin("wrapped")}, 1, 50});
    EXPECT_EQ(identify({"/usr/bin/java", {"java", "-jar", "/x.jar"}, 50, 50}, "Java"), "wrapped");
    EXPECT_EQ(identify({"/usr/bin/java", {"java", "-jar", "/x.jar"}, 50, 51}, "Java"), "java");
}

TEST_F(ApplicationDirectoryTest, ControlGroupsAndSandboxesLeadToTheEntry) {
    const auto inUnit = [](const std::string& unit, bool hasTerminal = false) {
        return FakeProcess{"/opt/other", {"other"}, 1, 0, hasTerminal, unit, {}};
    };
    for (const char* unit : {"app-gnome-org.example.Scoped\\x2dthing-1234.scope",
                             "app-org.example.Scoped\\x2dthing@autostart.service",
                             "app-gnome-org.example.Scoped-thing-99.scope"}) {
        EXPECT_EQ(identify(inUnit(unit), "X"), "org.example.Scoped-thing") << unit;
    }
    EXPECT_EQ(identify(inUnit("app-console-7.scope", true), "X"), "x")
        << "what runs inside a terminal is not the terminal";
    EXPECT_EQ(identify(inUnit("app-flatpak-org.example.Boxed-5.scope"), "X"), "org.example.Boxed");
    EXPECT_EQ(identify(inUnit("snap.snappy.snappy-01234567-89ab-cdef-0123-456789abcdef.scope"), "X"),
              "snappy_snappy");
    EXPECT_EQ(identify(inUnit("snap.other.tool.01234567-89ab-cdef-0123-456789abcdef.scope"), "X"),
              "other_tool");

    FakeProcess boxed = inUnit("session-1.scope");
    boxed.flatpakInfo = "[Application]\nname=org.example.Boxed\n";
    EXPECT_EQ(identify(boxed, "Editor"), "org.example.Boxed");
    boxed.flatpakInfo = "[Application]\nname=org.example.NotInstalled\n";
    EXPECT_EQ(identify(boxed, "Term"), "org.example.NotInstalled");
    // Outside the sandbox its entry does not count.
    EXPECT_EQ(identify(inUnit("session-1.scope"), "Plain"), "plain");
}

TEST_F(ApplicationDirectoryTest, ManagesWithoutAProcess) {
    DesktopWindow window;
    EXPECT_EQ(directory_.identify(window), std::nullopt);
    window.windowInstance = "Only Instance";
    EXPECT_EQ(directory_.identify(window), "only instance");
    window.windowClass = "Term";
    EXPECT_EQ(directory_.identify(window), "vendor-term");
    window.windowClass = "launch-it";
    EXPECT_EQ(directory_.identify(window), "org.example.Scoped-thing") << "a program's name in its place";
    EXPECT_EQ(directory_.entryPath("vendor-term"), fixtureRoot() / "data/applications/vendor-term.desktop");
    EXPECT_EQ(directory_.entryPath("../applications/vendor-term"), std::nullopt);
    EXPECT_EQ(directory_.entryPath("absent"), std::nullopt);
}

TEST_F(ApplicationDirectoryTest, SeesAnotherProcessWithTheSameNumberAndNewEntries) {
    DesktopWindow window;
    window.processIdentifier = 7;
    addProcess(proc_, 7, {bin("editor"), {"editor"}});
    EXPECT_EQ(directory_.identify(window), "org.example.Editor");
    addProcess(proc_, 7, {bin("term"), {"term"}});
    writeFile(proc_ / "7/stat", "7 (x) S 1 7 7 0 -1 0 0 0 0 0 0 0 0 0 20 0 1 0 999999 0 0\n");
    EXPECT_EQ(directory_.identify(window), "vendor-term");

    window.windowClass = "Latecomer";
    window.processIdentifier = 0;
    EXPECT_EQ(directory_.identify(window), "latecomer");
    installEntry("org.example.Late", "Exec=editor\nStartupWMClass=Latecomer\n");
    EXPECT_TRUE(runUntil([&] { return directory_.identify(window) == "org.example.Late"; }));
}

}  // namespace
}  // namespace orvane::testing
