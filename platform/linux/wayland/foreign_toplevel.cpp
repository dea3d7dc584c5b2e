#include "platform/linux/wayland/foreign_toplevel.h"

#include <glib.h>

#include <memory>

namespace orvane {

namespace {

using Handle = zwlr_foreign_toplevel_handle_v1;

ForeignToplevel& toplevelOf(void* self) { return *static_cast<ForeignToplevel*>(self); }

std::string validText(const char* text) {
    const std::unique_ptr<char, decltype(&g_free)> valid(g_utf8_make_valid(text, -1), g_free);
    return valid.get();
}

}  // namespace

const zwlr_foreign_toplevel_handle_v1_listener ForeignToplevel::kListener{
    .title =
        [](void* self, Handle*, const char* title) {
            auto& text = toplevelOf(self).pending_.title;
            text = validText(title);
            if (text->empty()) text.reset();
        },
    .app_id =
        [](void* self, Handle*, const char* identifier) {
            toplevelOf(self).pending_.applicationIdentifier = validText(identifier);
        },
    .output_enter = [](void*, Handle*, wl_output*) {},
    .output_leave = [](void*, Handle*, wl_output*) {},
    .state = [](void* self, Handle*, wl_array* list) { toplevelOf(self).setStates(*list); },
    .done =
        [](void* self, Handle*) {
            auto& toplevel = toplevelOf(self);
            toplevel.state_ = toplevel.pending_;
            if (toplevel.onChanged) toplevel.onChanged();
        },
    .closed =
        [](void* self, Handle*) {
            // Copied, since the call may destroy the toplevel.
            const auto onClosed = toplevelOf(self).onClosed;
            if (onClosed) onClosed();
        },
    .parent = [](void*, Handle*, Handle*) {},
};

ForeignToplevel::ForeignToplevel(Handle* handle, std::int64_t number) : handle_(handle), number_(number) {
    zwlr_foreign_toplevel_handle_v1_add_listener(handle, &kListener, this);
}

void ForeignToplevel::setStates(const wl_array& states) {
    pending_.isActivated = pending_.isMinimized = false;
    const auto* numbers = static_cast<const std::uint32_t*>(states.data);
    for (std::size_t i = 0; i < states.size / sizeof *numbers; ++i) {
        if (numbers[i] == ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) pending_.isActivated = true;
        if (numbers[i] == ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_MINIMIZED) pending_.isMinimized = true;
    }
}

}  // namespace orvane
