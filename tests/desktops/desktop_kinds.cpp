#include "tests/desktops/desktop_kinds.h"

#include <glib.h>

#include "tests/desktops/gnome_desktop.h"
#ifdef ORVANE_HAS_PLASMA_PROTOCOLS
#include "tests/desktops/kwin_desktop.h"
#endif
#include "tests/desktops/sway_desktop.h"
#include "tests/desktops/x11_desktop.h"

namespace orvane {

std::string DesktopKind::missingProgram() const {
    for (const auto& program : programs) {
        char* path = g_find_program_in_path(program.c_str());
        if (path == nullptr) return program;
        g_free(path);
    }
    return {};
}

std::ostream& operator<<(std::ostream& stream, const DesktopKind& kind) { return stream << kind.name; }

std::vector<DesktopKind> desktopKinds() {
    return {
        {"x11", {"Xvfb", "openbox", "xdotool"}, [] { return std::make_unique<X11Desktop>(); }, "X11 (xcb)"},
        {"sway",
         {"sway", "swaymsg", "setpriv"},
         [] { return std::make_unique<SwayDesktop>(); },
         "sway (IPC)"},
        {"wlroots",
         {"sway", "swaymsg", "setpriv"},
         [] { return std::make_unique<ToplevelDesktop>(); },
         "wlr-foreign-toplevel-management"},
        {"gnome",
         {"gnome-shell", "setpriv"},
         [] { return std::make_unique<GnomeDesktop>(); },
         "GNOME Shell (extension)"},
#ifdef ORVANE_HAS_PLASMA_PROTOCOLS
        {"kwin",
         {"kwin_wayland", "kbuildsycoca5", "setpriv"},
         [] { return std::make_unique<KwinDesktop>(true); },
         "KWin (window management)"},
        {"kwinscript",
         {"kwin_wayland", "kbuildsycoca5", "setpriv"},
         [] { return std::make_unique<KwinDesktop>(false); },
         "KWin (script)"},
#endif
    };
}

}  // namespace orvane
