#pragma once

#include <wayland-client.h>

#include <memory>

#include "foundation/internal.h"

namespace orvane {

/// Destroys a protocol object, here and in the compositor. Each type of object has a specialization.
template <typename Proxy>
struct WaylandRelease;

/// Owns a protocol object. Must not outlive the connection.
template <typename Proxy>
using WaylandHandle = std::unique_ptr<Proxy, WaylandRelease<Proxy>>;

template <>
struct WaylandRelease<wl_registry> {
    void operator()(wl_registry* proxy) const { wl_registry_destroy(proxy); }
};
template <>
struct WaylandRelease<wl_callback> {
    void operator()(wl_callback* proxy) const { wl_callback_destroy(proxy); }
};
template <>
struct WaylandRelease<wl_seat> {
    void operator()(wl_seat* proxy) const { wl_seat_destroy(proxy); }
};
template <>
struct WaylandRelease<wl_output> {
    void operator()(wl_output* proxy) const { wl_output_destroy(proxy); }
};

}  // namespace orvane
