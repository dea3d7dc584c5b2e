#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/x11/x11_connection.h"

namespace orvane {

/// What a window property held. Everything is empty for a property that is not set or a window that is gone.
class X11Property {
  public:
    explicit X11Property(X11Request<xcb_get_property_reply_t>::Pointer reply) : reply_(std::move(reply)) {}

    /// False when the window is gone or the server did not answer.
    bool isAnswered() const { return reply_ != nullptr; }
    bool isSet() const { return reply_ != nullptr && reply_->type != XCB_ATOM_NONE; }
    xcb_atom_t type() const {
        return reply_ != nullptr ? reply_->type : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    }
    /// The items of a property of 8-bit format.
    std::string_view bytes() const;
    /// The items of a property of 32-bit format.
    std::vector<std::uint32_t> words() const;
    /// The first of them, or `fallback`.
    std::uint32_t firstWord(std::uint32_t fallback) const;

  private:
    X11Request<xcb_get_property_reply_t>::Pointer reply_;
};

/// Asks for a property of any type; at most 64 KiB of it, more than any title or list needs.
class X11PropertyRequest {
  public:
    X11PropertyRequest(X11Connection& connection, xcb_window_t window, xcb_atom_t property)
        : request_(connection, xcb_get_property(connection.get(), 0, window, property,
                                                XCB_GET_PROPERTY_TYPE_ANY, 0, 64 * 1024 / 4)) {}
    X11PropertyRequest(X11Connection& connection, xcb_window_t window, X11Atom property)
        : X11PropertyRequest(connection, window, connection.atoms()[property]) {}

    /// Once only.
    X11Property get() { return X11Property(request_.get()); }

  private:
    X11Request<xcb_get_property_reply_t> request_;
};

}  // namespace orvane
