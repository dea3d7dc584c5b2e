#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// A program with windows, played by the test itself through a connection of its own.
class TestWindows {
  public:
    explicit TestWindows(const std::string& display);
    ~TestWindows();
    TestWindows(const TestWindows&) = delete;
    TestWindows& operator=(const TestWindows&) = delete;

    xcb_window_t create(std::string_view title);
    void show(xcb_window_t window);
    xcb_window_t open(std::string_view title);
    void close(xcb_window_t window);

    void setText(xcb_window_t window, const char* property, const char* type, std::string_view text);
    void setAtoms(xcb_window_t window, const char* property, const std::vector<const char*>& atoms);
    void setNumber(xcb_window_t window, const char* property, std::uint32_t value);

    // What a pager asks the window manager for.
    void activate(xcb_window_t window);
    void minimize(xcb_window_t window);
    void switchDesktop(std::uint32_t desktop);
    void moveToDesktop(xcb_window_t window, std::uint32_t desktop);

    // What a window manager does.
    void beWindowManager();
    void claimActive(xcb_window_t window);
    void runScreenSaver(bool on);

  private:
    xcb_atom_t atom(const char* name);
    void ask(xcb_window_t window, const char* message, std::uint32_t first);

    xcb_connection_t* connection_;
    xcb_window_t root_;
};

}  // namespace orvane
