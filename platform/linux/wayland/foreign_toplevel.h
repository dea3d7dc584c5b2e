#pragma once

#include <wayland-protocols/wlr-foreign-toplevel-management-unstable-v1-client.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/wayland/wayland_handle.h"

namespace orvane {

template <>
struct WaylandRelease<zwlr_foreign_toplevel_handle_v1> {
    void operator()(zwlr_foreign_toplevel_handle_v1* proxy) const {
        zwlr_foreign_toplevel_handle_v1_destroy(proxy);
    }
};

/// One window as wlr-foreign-toplevel-management tells it. What the compositor says takes effect when it says
/// that a change is complete.
class ForeignToplevel {
  public:
    struct State {
        std::optional<std::string> title;
        std::string applicationIdentifier;
        bool isActivated = false;
        bool isMinimized = false;
    };

    /// Takes the handle. `number` is the window's for its life.
    ForeignToplevel(zwlr_foreign_toplevel_handle_v1* handle, std::int64_t number);
    ForeignToplevel(const ForeignToplevel&) = delete;
    ForeignToplevel& operator=(const ForeignToplevel&) = delete;

    std::int64_t number() const { return number_; }
    /// None until the first description is complete.
    const std::optional<State>& state() const { return state_; }

    /// Set by the owner.
    std::function<void()> onChanged;
    /// The window is gone. May destroy this object.
    std::function<void()> onClosed;

  private:
    void setStates(const wl_array& states);

    static const zwlr_foreign_toplevel_handle_v1_listener kListener;

    WaylandHandle<zwlr_foreign_toplevel_handle_v1> handle_;
    const std::int64_t number_;
    State pending_;
    std::optional<State> state_;
};

}  // namespace orvane
