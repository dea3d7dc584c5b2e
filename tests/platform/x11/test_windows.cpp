#include "tests/platform/x11/test_windows.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace orvane {

TestWindows::TestWindows(const std::string& display) : connection_(xcb_connect(display.c_str(), nullptr)) {
    if (xcb_connection_has_error(connection_) != 0) throw std::runtime_error("no X server on " + display);
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
}

TestWindows::~TestWindows() { xcb_disconnect(connection_); }

xcb_atom_t TestWindows::atom(const char* name) {
    auto* reply = xcb_intern_atom_reply(
        connection_, xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name),
        nullptr);
    const xcb_atom_t result = reply->atom;
    std::free(reply);
    return result;
}

xcb_window_t TestWindows::create(std::string_view title) {
    const auto window = xcb_generate_id(connection_);
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_, 0, 0, 100, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    if (!title.empty()) setText(window, "_NET_WM_NAME", "UTF8_STRING", title);
    return window;
}

void TestWindows::show(xcb_window_t window) {
    xcb_map_window(connection_, window);
    xcb_flush(connection_);
}

xcb_window_t TestWindows::open(std::string_view title) {
    const auto window = create(title);
    show(window);
    return window;
}

void TestWindows::close(xcb_window_t window) {
    xcb_destroy_window(connection_, window);
    xcb_flush(connection_);
}

void TestWindows::setText(xcb_window_t window, const char* property, const char* type,
                          std::string_view text) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(property), atom(type), 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
    xcb_flush(connection_);
}

void TestWindows::setAtoms(xcb_window_t window, const char* property, const std::vector<const char*>& atoms) {
    std::vector<xcb_atom_t> values;
    for (const auto* name : atoms) values.push_back(atom(name));
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(property), XCB_ATOM_ATOM, 32,
                        static_cast<std::uint32_t>(values.size()), values.data());
    xcb_flush(connection_);
}

void TestWindows::setNumber(xcb_window_t window, const char* property, std::uint32_t value) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(property), XCB_ATOM_CARDINAL, 32, 1,
                        &value);
    xcb_flush(connection_);
}

void TestWindows::ask(xcb_window_t window, const char* message, std::uint32_t first) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(message);
    event.data.data32[0] = first;
    xcb_send_event(connection_, 0, root_,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(connection_);
}

void TestWindows::activate(xcb_window_t window) { ask(window, "_NET_ACTIVE_WINDOW", 2); }

// 3 is IconicState (ICCCM 4.1.4).
void TestWindows::minimize(xcb_window_t window) { ask(window, "WM_CHANGE_STATE", 3); }

void TestWindows::switchDesktop(std::uint32_t desktop) { ask(root_, "_NET_CURRENT_DESKTOP", desktop); }

void TestWindows::moveToDesktop(xcb_window_t window, std::uint32_t desktop) {
    ask(window, "_NET_WM_DESKTOP", desktop);
}

void TestWindows::beWindowManager() {
    const auto window = create("");
    setNumber(window, "_NET_SUPPORTING_WM_CHECK", window);
    setNumber(root_, "_NET_SUPPORTING_WM_CHECK", window);
}

void TestWindows::claimActive(xcb_window_t window) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, root_, atom("_NET_ACTIVE_WINDOW"),
                        XCB_ATOM_WINDOW, 32, 1, &window);
    xcb_flush(connection_);
}

void TestWindows::runScreenSaver(bool on) {
    xcb_force_screen_saver(connection_, on ? XCB_SCREEN_SAVER_ACTIVE : XCB_SCREEN_SAVER_RESET);
    xcb_flush(connection_);
}

}  // namespace orvane
