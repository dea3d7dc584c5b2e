#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"

namespace orvane {

/// What our script in KWin tells at one moment.
struct KWinReport {
    struct Window {
        /// KWin's own; never empty.
        std::string identifier;
        /// Still without a number.
        DesktopWindow description;
    };

    /// On screen, front to back.
    std::vector<Window> windows;
    /// Identifier of the window that receives key events, which need not be among the others; may be empty.
    std::string active;

    /// Reads a report, whatever it is. None when it is none; a window without an identifier, or one that is
    /// told twice, is passed over.
    static std::optional<KWinReport> parse(const std::string& json);
};

}  // namespace orvane
