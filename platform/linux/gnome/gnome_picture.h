#pragma once

#include <gio/gio.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"

namespace orvane {

/// What the shell's extension tells at one moment.
struct GnomePicture {
    /// On screen, front to back.
    std::vector<DesktopWindow> windows;
    std::optional<DesktopWindow> active;

    /// Reads the values of an answer to GetWindows, whatever they are; null is allowed. None when they are no
    /// such answer; a window without a number, or one that is told twice, is passed over.
    static std::optional<GnomePicture> parse(GVariant* values);
};

}  // namespace orvane
