#include "tests/platform/accessibility/private_accessibility.h"

#include <filesystem>
#include <map>

namespace orvane {

namespace fs = std::filesystem;

namespace {

constexpr const char* kDescription =
    "<node><interface name='org.a11y.Bus'>"
    "<method name='GetAddress'><arg type='s' direction='out'/></method>"
    "</interface></node>";

}  // namespace

std::string PrivateAccessibility::registryProgram() {
    // Distributions differ in where they keep programs that no person starts.
    for (const char* file : {"/usr/libexec/at-spi2-registryd", "/usr/lib/at-spi2-core/at-spi2-registryd",
                             "/usr/lib/at-spi2-registryd"}) {
        if (fs::exists(file)) return file;
    }
    return {};
}

PrivateAccessibility::PrivateAccessibility(PrivateBus& sessionBus) : session_(sessionBus.connect()) {
    // Programs of another user look for its socket.
    fs::permissions(fs::path(address().substr(address().find('=') + 1)).parent_path(), fs::perms(0755));
    bus_.start();
    registry_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{registryProgram()},
        std::map<std::string, std::string>{{"AT_SPI_BUS_ADDRESS", address()},
                                           {"DBUS_SESSION_BUS_ADDRESS", sessionBus.address()},
                                           {"DISPLAY", ""}});

    g_dbus_connection_set_exit_on_close(session_, FALSE);
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(kDescription, nullptr);
    static const GDBusInterfaceVTable table{
        [](GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant*,
           GDBusMethodInvocation* invocation, gpointer self) {
            const auto& address = static_cast<PrivateAccessibility*>(self)->address();
            g_dbus_method_invocation_return_value(invocation, g_variant_new("(s)", address.c_str()));
        },
        nullptr,
        nullptr,
        {}};
    g_dbus_connection_register_object(session_, "/org/a11y/bus", node->interfaces[0], &table, this, nullptr,
                                      nullptr);
    g_dbus_node_info_unref(node);
    g_bus_own_name_on_connection(session_, "org.a11y.Bus", G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr,
                                 nullptr, nullptr);
}

PrivateAccessibility::~PrivateAccessibility() {
    g_dbus_connection_close_sync(session_, nullptr, nullptr);
    g_object_unref(session_);
}

}  // namespace orvane
