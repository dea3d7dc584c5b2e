#include <gtest/gtest.h>

#include <regex>

#include "tests/host/terminal/terminal_program.h"
#include "tests/platform/x11/private_display.h"
#include "tests/platform/x11/test_windows.h"

namespace orvane {
namespace {

using test::TerminalProgram;

class LiveLine : public testing::Test {
  protected:
    LiveLine() : windows_(display_.name()) { display_.startWindowManager(); }

    void show(const char* title) {
        const xcb_window_t window = windows_.create(title);
        windows_.show(window);
        windows_.activate(window);
    }
    TerminalProgram run(std::vector<std::string> command, unsigned short columns = 100) {
        command.insert(command.begin(), ORVANE_PROGRAM);
        return TerminalProgram(command, {{"DISPLAY", display_.name()}, {"WAYLAND_DISPLAY", ""}}, columns);
    }
    /// What the last line shows, without its colours; `colors` tells how many there were.
    static std::string lastLine(const std::string& output, std::ptrdiff_t* colors = nullptr) {
        const std::string line = output.substr(output.rfind("\r\033[K") + 4);
        const std::regex color("\033\\[[0-9;]*m");
        if (colors) *colors = std::distance(std::sregex_iterator(line.begin(), line.end(), color), {});
        return std::regex_replace(line, color, "");
    }

    PrivateDisplay display_;
    TestWindows windows_;
};

TEST_F(LiveLine, ShowsWhatIsRecorded) {
    show("Shopping list");
    auto tracker = run({"track"});
    std::ptrdiff_t colors = 0;
    const std::string line = lastLine(tracker.readUntil("  today 0:00"), &colors);
    EXPECT_TRUE(std::regex_match(
        line, std::regex("   test_host_terminal — Shopping list  input 0:0[0-9] ago  today 0:00")))
        << line;
    EXPECT_EQ(colors, 2);  // of the swatch, on and off

    // One tracker a store; this one goes on.
    auto second = run({"track"});
    EXPECT_EQ(second.finish(), 1);
    EXPECT_NE(second.output().find("Another tracker"), std::string::npos) << second.output();

    auto disable = run({"disable"});
    EXPECT_EQ(disable.finish(), 0);
    EXPECT_NE(tracker.readUntil("switched off").find("switched off"), std::string::npos);
    tracker.interrupt();
    EXPECT_EQ(tracker.finish(), 0);
    EXPECT_TRUE(tracker.output().ends_with("\n"));
}

TEST_F(LiveLine, IsCutToTheTerminalAndHoldsNoControlCharacters) {
    show("Ho\033[31mme and a title that is far too long for such a terminal");
    auto tracker = run({"track"}, 40);
    const std::string line = lastLine(tracker.readUntil("…"));
    EXPECT_TRUE(line.starts_with("   test_host_terminal — Ho [31mme")) << line;
    // The ellipsis and the dash are three bytes each.
    EXPECT_EQ(line.size(), 40U + 4U) << line;
}

}  // namespace
}  // namespace orvane
