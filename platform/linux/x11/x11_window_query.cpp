#include "platform/linux/x11/x11_window_query.h"

#include <glib.h>

#include <algorithm>
#include <array>

#include "platform/linux/x11/x11_text.h"

namespace orvane {

namespace {

// "On all desktops", from the Extended Window Manager Hints.
constexpr std::uint32_t kAllDesktops = 0xFFFFFFFF;

struct TypeLayer {
    X11Atom type;
    int layer;
};

constexpr std::array kTypeLayers{
    TypeLayer{X11Atom::netWmWindowTypeNormal, 0},
    TypeLayer{X11Atom::netWmWindowTypeDialog, 0},
    TypeLayer{X11Atom::netWmWindowTypeDesktop, WindowLayer::below},
    TypeLayer{X11Atom::netWmWindowTypeUtility, WindowLayer::floating},
    TypeLayer{X11Atom::netWmWindowTypeToolbar, WindowLayer::floating},
    TypeLayer{X11Atom::netWmWindowTypeSplash, WindowLayer::floating},
    TypeLayer{X11Atom::netWmWindowTypeDock, WindowLayer::dock},
    TypeLayer{X11Atom::netWmWindowTypeMenu, WindowLayer::menu},
    TypeLayer{X11Atom::netWmWindowTypeDropdownMenu, WindowLayer::menu},
    TypeLayer{X11Atom::netWmWindowTypePopupMenu, WindowLayer::menu},
    TypeLayer{X11Atom::netWmWindowTypeCombo, WindowLayer::menu},
    TypeLayer{X11Atom::netWmWindowTypeDnd, WindowLayer::menu},
    TypeLayer{X11Atom::netWmWindowTypeTooltip, WindowLayer::menu},
    TypeLayer{X11Atom::netWmWindowTypeNotification, WindowLayer::menu},
};

bool contains(const std::vector<std::uint32_t>& list, xcb_atom_t atom) {
    return std::find(list.begin(), list.end(), atom) != list.end();
}

X11Request<xcb_res_query_client_ids_reply_t> askClient(X11Connection& connection, xcb_window_t window) {
    const xcb_res_client_id_spec_t spec{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    return {connection, xcb_res_query_client_ids(connection.get(), 1, &spec)};
}

}  // namespace

X11WindowQuery::X11WindowQuery(X11Connection& connection, xcb_window_t window)
    : connection_(connection),
      window_(window),
      state_(connection, window, X11Atom::netWmState),
      type_(connection, window, X11Atom::netWmWindowType),
      desktop_(connection, window, X11Atom::netWmDesktop),
      name_(connection, window, X11Atom::netWmName),
      oldName_(connection, window, XCB_ATOM_WM_NAME),
      class_(connection, window, XCB_ATOM_WM_CLASS),
      gtkApplicationId_(connection, window, X11Atom::gtkApplicationId),
      pid_(connection, window, X11Atom::netWmPid),
      machine_(connection, window, XCB_ATOM_WM_CLIENT_MACHINE) {
    if (connection.hasClientIdentifiers()) client_.emplace(askClient(connection, window));
}

std::optional<X11WindowFacts> X11WindowQuery::get() {
    const auto state = state_.get();
    if (!state.isAnswered()) return std::nullopt;
    const auto states = state.words();
    const auto types = type_.get().words();
    const auto desktop = desktop_.get().firstWord(kAllDesktops);
    const auto& atoms = connection_.atoms();

    X11WindowFacts facts;
    facts.isMinimized = contains(states, atoms[X11Atom::netWmStateHidden]);
    facts.isDesktopElement = contains(types, atoms[X11Atom::netWmWindowTypeDesktop]);
    if (desktop != kAllDesktops) facts.desktop = desktop;

    auto& window = facts.window;
    window.number = window_;
    window.layer = layer(types, states);
    auto title = textOf(name_.get());
    if (title.empty()) title = textOf(oldName_.get());
    if (!title.empty()) window.title = std::move(title);
    // Two texts, each ended by a zero: instance, then class (ICCCM 4.1.2.5).
    const auto property = class_.get();
    const auto classes = property.bytes();
    window.windowInstance = decodeX11Text(classes, X11TextEncoding::unknown);
    const auto separator = classes.find('\0');
    if (separator != std::string_view::npos) {
        window.windowClass = decodeX11Text(classes.substr(separator + 1), X11TextEncoding::unknown);
    }
    window.gtkApplicationId = textOf(gtkApplicationId_.get());
    window.processIdentifier = processIdentifier();
    return facts;
}

std::string X11WindowQuery::textOf(const X11Property& property) const {
    const auto& atoms = connection_.atoms();
    auto encoding = X11TextEncoding::unknown;
    if (property.type() == atoms[X11Atom::utf8String]) encoding = X11TextEncoding::utf8;
    if (property.type() == XCB_ATOM_STRING) encoding = X11TextEncoding::latin1;
    if (property.type() == atoms[X11Atom::compoundText]) encoding = X11TextEncoding::compound;
    return decodeX11Text(property.bytes(), encoding);
}

std::int32_t X11WindowQuery::processIdentifier() {
    const auto told = pid_.get();
    const auto machine = machine_.get();
    // The server knows who is connected to it; a program in a container tells the number it has in there.
    if (const auto reply = client_ ? client_->get() : nullptr) {
        for (auto ids = xcb_res_query_client_ids_ids_iterator(reply.get()); ids.rem > 0;
             xcb_res_client_id_value_next(&ids)) {
            if ((ids.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) == 0) continue;
            if (xcb_res_client_id_value_value_length(ids.data) < 1) continue;
            const auto pid = static_cast<std::int32_t>(*xcb_res_client_id_value_value(ids.data));
            if (pid > 0) return pid;
        }
    }
    // A number that another machine gave means nothing here.
    const auto host = textOf(machine);
    if (!host.empty() && host != "localhost" && host != g_get_host_name()) return 0;
    return std::max(0, static_cast<std::int32_t>(told.firstWord(0)));
}

int X11WindowQuery::layer(const std::vector<std::uint32_t>& types,
                          const std::vector<std::uint32_t>& states) const {
    const auto& atoms = connection_.atoms();
    // A window lists its types by preference; those that nobody knows are passed over.
    for (const auto type : types) {
        const auto known = std::find_if(kTypeLayers.begin(), kTypeLayers.end(),
                                        [&](const TypeLayer& entry) { return atoms[entry.type] == type; });
        if (known == kTypeLayers.end()) continue;
        if (known->layer != 0) return known->layer;
        break;
    }
    if (contains(states, atoms[X11Atom::netWmStateAbove])) return WindowLayer::floating;
    if (contains(states, atoms[X11Atom::netWmStateBelow])) return WindowLayer::below;
    return 0;
}

}  // namespace orvane
