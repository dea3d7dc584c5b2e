#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"

namespace orvane {

/// The windows on screen as sway's tree of containers tells them.
struct SwayTree {
    /// In the order in which they had the focus last, the latest first.
    std::vector<DesktopWindow> windows;
    /// The window that has the focus; none when an empty workspace or a whole container has it.
    std::optional<DesktopWindow> focused;

    /// Reads the answer to a question for the tree, whatever it holds. None when it is no tree; a part that
    /// makes no sense is passed over.
    static std::optional<SwayTree> parse(std::string_view json);
};

/// Whether an event of a window or workspace can mean that another window is active, or none. True for what
/// cannot be read: looking costs less than missing a change.
bool canChangeSwayFocus(std::string_view json);
/// Whether an event of a window says that it gets the focus now.
bool isSwayFocusEvent(std::string_view json);

}  // namespace orvane
