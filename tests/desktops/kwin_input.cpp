// Moves the pointer on the KWin that $WAYLAND_DISPLAY leads to.

#include <wayland-client.h>
#include <wayland-protocols/fake-input-client.h>

#include <string_view>

int main() {
    wl_display* display = wl_display_connect(nullptr);
    if (display == nullptr) return 1;
    org_kde_kwin_fake_input* input = nullptr;
    const wl_registry_listener listener{
        [](void* found, wl_registry* registry, std::uint32_t name, const char* interface, std::uint32_t) {
            if (std::string_view(interface) == org_kde_kwin_fake_input_interface.name)
                *static_cast<void**>(found) =
                    wl_registry_bind(registry, name, &org_kde_kwin_fake_input_interface, 1);
        },
        [](void*, wl_registry*, std::uint32_t) {}};
    wl_registry* registry = wl_display_get_registry(display);
    wl_registry_add_listener(registry, &listener, &input);
    wl_display_roundtrip(display);
    if (input == nullptr) return 1;
    org_kde_kwin_fake_input_authenticate(input, "tests", "to be a user");
    org_kde_kwin_fake_input_pointer_motion(input, wl_fixed_from_int(1), wl_fixed_from_int(1));
    wl_display_roundtrip(display);
    org_kde_kwin_fake_input_destroy(input);
    wl_registry_destroy(registry);
    wl_display_disconnect(display);
}
