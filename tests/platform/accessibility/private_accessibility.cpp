#include "tests/platform/accessibility/private_accessibility.h"

#include <filesystem>
#include <map>
#include <stdexcept>

#include "tests/platform/main_loop_wait.h"

namespace orvane {

namespace fs = std::filesystem;

namespace {

constexpr const char* kDescription =
    "<node><interface name='org.a11y.Bus'>"
    "<method name='GetAddress'><arg type='s' direction='out'/></method>"
    "</interface><interface name='org.a11y.Status'>"
    "<property name='IsEnabled' type='b' access='readwrite'/>"
    "</interface></node>";

/// Where everybody gets to who gets to the session's bus.
std::string folderBeside(const std::string& sessionAddress) {
    const auto socket = fs::path(sessionAddress.substr(sessionAddress.find('=') + 1));
    const auto folder = socket.parent_path() / "accessibility";
    fs::create_directory(folder);
    return folder.string();
}

}  // namespace

std::string PrivateAccessibility::registryProgram() {
    // Distributions differ in where they keep programs that no person starts.
    for (const char* file : {"/usr/libexec/at-spi2-registryd", "/usr/lib/at-spi2-core/at-spi2-registryd",
                             "/usr/lib/at-spi2-registryd"}) {
        if (fs::exists(file)) return file;
    }
    return {};
}

PrivateAccessibility::PrivateAccessibility(PrivateBus& sessionBus)
    : bus_(folderBeside(sessionBus.address())), session_(sessionBus.connect()) {
    bus_.start();
    registry_ = std::make_unique<ChildProcess>(
        // It ends itself where $DISPLAY leads nowhere, even when it is empty.
        std::vector<std::string>{"env", "-u", "DISPLAY", registryProgram()},
        std::map<std::string, std::string>{{"AT_SPI_BUS_ADDRESS", address()},
                                           {"DBUS_SESSION_BUS_ADDRESS", sessionBus.address()}});
    // Programs that come before it never offer themselves.
    waitForRegistry();

    g_dbus_connection_set_exit_on_close(session_, FALSE);
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(kDescription, nullptr);
    static const GDBusInterfaceVTable table{
        [](GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant*,
           GDBusMethodInvocation* invocation, gpointer self) {
            const auto& address = static_cast<PrivateAccessibility*>(self)->address();
            g_dbus_method_invocation_return_value(invocation, g_variant_new("(s)", address.c_str()));
        },
        [](GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GError**, gpointer) {
            return g_variant_new_boolean(FALSE);
        },
        [](GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant*, GError**,
           gpointer self) -> gboolean { return static_cast<PrivateAccessibility*>(self)->wasSwitched_ = true; },
        {}};
    for (GDBusInterfaceInfo** each = node->interfaces; *each != nullptr; ++each) {
        g_dbus_connection_register_object(session_, "/org/a11y/bus", *each, &table, this, nullptr, nullptr);
    }
    g_dbus_node_info_unref(node);
    g_bus_own_name_on_connection(session_, "org.a11y.Bus", G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr,
                                 nullptr, nullptr);
}

void PrivateAccessibility::waitForRegistry() {
    GDBusConnection* connection = bus_.connect();
    g_dbus_connection_set_exit_on_close(connection, FALSE);
    const bool isThere = waitUntil(
        [connection] {
            GVariant* reply = g_dbus_connection_call_sync(
                connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                "NameHasOwner", g_variant_new("(s)", "org.a11y.atspi.Registry"), G_VARIANT_TYPE("(b)"),
                G_DBUS_CALL_FLAGS_NONE, 30000, nullptr, nullptr);
            gboolean isOwned = FALSE;
            if (reply != nullptr) {
                g_variant_get(reply, "(b)", &isOwned);
                g_variant_unref(reply);
            }
            return isOwned != FALSE;
        },
        60);
    g_dbus_connection_close_sync(connection, nullptr, nullptr);
    g_object_unref(connection);
    if (!isThere) throw std::runtime_error("at-spi2-registryd did not start");
}

PrivateAccessibility::~PrivateAccessibility() {
    g_dbus_connection_close_sync(session_, nullptr, nullptr);
    g_object_unref(session_);
}

}  // namespace orvane
