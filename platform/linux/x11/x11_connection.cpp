#include "platform/linux/x11/x11_connection.h"

#include <poll.h>
#include <xcb/dpms.h>
#include <xcb/res.h>
#include <xcb/screensaver.h>
#include <xcb/xcbext.h>

#include <cerrno>
#include <chrono>

namespace orvane {

namespace {

constexpr auto kReplyTimeout = std::chrono::milliseconds(500);

template <typename Reply>
using Owned = std::unique_ptr<Reply, X11Free>;

const xcb_query_extension_reply_t* presentExtension(xcb_connection_t* connection,
                                                    xcb_extension_t* extension) {
    const auto* data = xcb_get_extension_data(connection, extension);
    return data != nullptr && data->present != 0 ? data : nullptr;
}

xcb_window_t rootOfScreen(xcb_connection_t* connection, int number) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; number > 0 && screens.rem > 1; --number) xcb_screen_next(&screens);
    if (screens.rem == 0) return XCB_WINDOW_NONE;
    return screens.data->root;
}

}  // namespace

std::unique_ptr<X11Connection> X11Connection::open(const std::string& display) {
    int screen = 0;
    auto* connection = xcb_connect(display.c_str(), &screen);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        return nullptr;
    }
    std::unique_ptr<X11Connection> result(new X11Connection(connection, rootOfScreen(connection, screen)));
    return result->isBroken() || result->root_ == XCB_WINDOW_NONE ? nullptr : std::move(result);
}

X11Connection::X11Connection(xcb_connection_t* connection, xcb_window_t root)
    : connection_(connection), root_(root), atoms_(connection) {
    // The first use of an extension waits for the server without a limit; here is where waiting is allowed.
    for (auto* extension : {&xcb_res_id, &xcb_screensaver_id, &xcb_dpms_id}) {
        xcb_prefetch_extension_data(connection, extension);
    }
    if (presentExtension(connection, &xcb_res_id) != nullptr) {
        Owned<xcb_res_query_version_reply_t> version(
            xcb_res_query_version_reply(connection, xcb_res_query_version(connection, 1, 2), nullptr));
        hasClientIdentifiers_ = version && (version->server_major > 1 ||
                                            (version->server_major == 1 && version->server_minor >= 2));
    }
    if (const auto* saver = presentExtension(connection, &xcb_screensaver_id)) {
        screenSaverEvent_ = static_cast<std::uint8_t>(saver->first_event + XCB_SCREENSAVER_NOTIFY);
    }
    if (presentExtension(connection, &xcb_dpms_id) != nullptr) {
        Owned<xcb_dpms_capable_reply_t> capable(
            xcb_dpms_capable_reply(connection, xcb_dpms_capable(connection), nullptr));
        hasScreenPower_ = capable && capable->capable != 0;
    }
}

X11Connection::~X11Connection() { xcb_disconnect(connection_); }

void* X11Connection::waitForReply(unsigned int sequence) {
    xcb_flush(connection_);
    const auto deadline = std::chrono::steady_clock::now() + kReplyTimeout;
    for (;;) {
        void* reply = nullptr;
        xcb_generic_error_t* error = nullptr;
        if (xcb_poll_for_reply(connection_, sequence, &reply, &error) != 0) {
            std::free(error);
            if (!isBroken()) isStalled_ = false;
            return reply;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd ready{xcb_get_file_descriptor(connection_), POLLIN, 0};
        const int answer =
            isStalled_ || left.count() <= 0 ? 0 : poll(&ready, 1, static_cast<int>(left.count()));
        if (answer == 0 || (answer < 0 && errno != EINTR)) {
            isStalled_ = true;
            xcb_discard_reply(connection_, sequence);
            return nullptr;
        }
    }
}

}  // namespace orvane
