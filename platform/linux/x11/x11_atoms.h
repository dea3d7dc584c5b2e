#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstddef>

#include "foundation/internal.h"

namespace orvane {

/// Names this backend reads or compares. Those that begin with "net" are the Extended Window Manager Hints.
enum class X11Atom : std::size_t {
    netActiveWindow,
    netClientList,
    netClientListStacking,
    netCurrentDesktop,
    netSupportingWmCheck,
    netWmDesktop,
    netWmName,
    netWmPid,
    netWmState,
    netWmStateAbove,
    netWmStateBelow,
    netWmStateHidden,
    netWmWindowType,
    netWmWindowTypeCombo,
    netWmWindowTypeDesktop,
    netWmWindowTypeDialog,
    netWmWindowTypeDnd,
    netWmWindowTypeDock,
    netWmWindowTypeDropdownMenu,
    netWmWindowTypeMenu,
    netWmWindowTypeNormal,
    netWmWindowTypeNotification,
    netWmWindowTypePopupMenu,
    netWmWindowTypeSplash,
    netWmWindowTypeToolbar,
    netWmWindowTypeTooltip,
    netWmWindowTypeUtility,
    gtkApplicationId,
    utf8String,
    compoundText,
    count
};

/// The server's numbers for those names.
class X11Atoms {
  public:
    /// Asks for all of them in one go and waits. Names the server does not answer for stay XCB_ATOM_NONE.
    explicit X11Atoms(xcb_connection_t* connection);

    xcb_atom_t operator[](X11Atom atom) const { return atoms_[static_cast<std::size_t>(atom)]; }

  private:
    std::array<xcb_atom_t, static_cast<std::size_t>(X11Atom::count)> atoms_{};
};

}  // namespace orvane
