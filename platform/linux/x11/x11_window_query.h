#pragma once

#include <xcb/res.h>

#include <optional>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"
#include "platform/linux/x11/x11_property.h"

namespace orvane {

/// A window and what decides whether it is on screen.
struct X11WindowFacts {
    DesktopWindow window;
    bool isMinimized = false;
    /// The desktop's wallpaper and icons.
    bool isDesktopElement = false;
    /// Virtual desktop it is on; none when it is on all of them or does not say.
    std::optional<std::uint32_t> desktop;
};

/// Sends all questions about one window when made; `get` collects the answers. Make the queries of several
/// windows before collecting the first.
class X11WindowQuery {
  public:
    X11WindowQuery(X11Connection& connection, xcb_window_t window);

    /// Once only. None when the window is gone.
    std::optional<X11WindowFacts> get();

  private:
    std::string textOf(const X11Property& property) const;
    std::int32_t processIdentifier();
    int layer(const std::vector<std::uint32_t>& types, const std::vector<std::uint32_t>& states) const;

    X11Connection& connection_;
    xcb_window_t window_;
    X11PropertyRequest state_;
    X11PropertyRequest type_;
    X11PropertyRequest desktop_;
    X11PropertyRequest name_;
    X11PropertyRequest oldName_;
    X11PropertyRequest class_;
    X11PropertyRequest gtkApplicationId_;
    X11PropertyRequest pid_;
    X11PropertyRequest machine_;
    std::optional<X11Request<xcb_res_query_client_ids_reply_t>> client_;
};

}  // namespace orvane
