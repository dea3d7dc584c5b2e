#include "platform/linux/x11/x11_atoms.h"

#include <cstdlib>
#include <string_view>

namespace orvane {

namespace {

constexpr std::array<std::string_view, static_cast<std::size_t>(X11Atom::count)> kNames{
    "_NET_ACTIVE_WINDOW",
    "_NET_CLIENT_LIST",
    "_NET_CLIENT_LIST_STACKING",
    "_NET_CURRENT_DESKTOP",
    "_NET_SUPPORTING_WM_CHECK",
    "_NET_WM_DESKTOP",
    "_NET_WM_NAME",
    "_NET_WM_PID",
    "_NET_WM_STATE",
    "_NET_WM_STATE_ABOVE",
    "_NET_WM_STATE_BELOW",
    "_NET_WM_STATE_HIDDEN",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_COMBO",
    "_NET_WM_WINDOW_TYPE_DESKTOP",
    "_NET_WM_WINDOW_TYPE_DIALOG",
    "_NET_WM_WINDOW_TYPE_DND",
    "_NET_WM_WINDOW_TYPE_DOCK",
    "_NET_WM_WINDOW_TYPE_DROPDOWN_MENU",
    "_NET_WM_WINDOW_TYPE_MENU",
    "_NET_WM_WINDOW_TYPE_NORMAL",
    "_NET_WM_WINDOW_TYPE_NOTIFICATION",
    "_NET_WM_WINDOW_TYPE_POPUP_MENU",
    "_NET_WM_WINDOW_TYPE_SPLASH",
    "_NET_WM_WINDOW_TYPE_TOOLBAR",
    "_NET_WM_WINDOW_TYPE_TOOLTIP",
    "_NET_WM_WINDOW_TYPE_UTILITY",
    "_GTK_APPLICATION_ID",
    "UTF8_STRING",
    "COMPOUND_TEXT",
};
static_assert(!kNames.back().empty());

}  // namespace

X11Atoms::X11Atoms(xcb_connection_t* connection) {
    std::array<xcb_intern_atom_cookie_t, kNames.size()> cookies{};
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        cookies[i] =
            xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(kNames[i].size()), kNames[i].data());
    }
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        auto* reply = xcb_intern_atom_reply(connection, cookies[i], nullptr);
        if (reply != nullptr) atoms_[i] = reply->atom;
        std::free(reply);
    }
}

}  // namespace orvane
