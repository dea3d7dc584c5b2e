#include "tests/platform/session/session_mocks.h"

#include <stdexcept>

#include "tests/platform/main_loop_wait.h"

namespace orvane {

namespace {

constexpr const char* kService = "org.freedesktop.login1";
constexpr const char* kManagerPath = "/org/freedesktop/login1";
constexpr const char* kManager = "org.freedesktop.login1.Manager";
constexpr const char* kMock = "org.freedesktop.DBus.Mock";

std::string sessionPath(const std::string& identifier) {
    return "/org/freedesktop/login1/session/" + identifier;
}

GVariant* callNow(GDBusConnection* connection, const char* service, const std::string& path,
                  const char* interface, const char* method, GVariant* arguments) {
    return g_dbus_connection_call_sync(connection, service, path.c_str(), interface, method, arguments,
                                       nullptr, G_DBUS_CALL_FLAGS_NONE, 10000, nullptr, nullptr);
}

bool hasOwner(GDBusConnection* connection, const char* name) {
    GVariant* reply = callNow(connection, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetNameOwner",
                              g_variant_new("(s)", name));
    if (reply != nullptr) g_variant_unref(reply);
    return reply != nullptr;
}

}  // namespace

MockLoginManager::MockLoginManager(PrivateBus& bus) : connection_(bus.connect()) {
    process_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"},
        std::map<std::string, std::string>{{"DBUS_SYSTEM_BUS_ADDRESS", bus.address()}});
    if (!waitUntil([this] { return hasOwner(connection_, kService); })) {
        throw std::runtime_error("python3-dbusmock did not start");
    }
}

MockLoginManager::~MockLoginManager() { g_object_unref(connection_); }

void MockLoginManager::call(const std::string& path, const char* interface, const char* method,
                            GVariant* arguments) {
    GVariant* reply = callNow(connection_, kService, path, interface, method, arguments);
    if (reply == nullptr) throw std::runtime_error(method);
    g_variant_unref(reply);
}

void MockLoginManager::callSession(const char* session, const char* method, GVariant* arguments) {
    call(sessionPath(session), "org.freedesktop.login1.Session", method, arguments);
}

void MockLoginManager::emit(const char* signal, const char* signature,
                            std::initializer_list<GVariant*> values) {
    GVariantBuilder arguments;
    g_variant_builder_init(&arguments, G_VARIANT_TYPE("av"));
    for (auto* value : values) g_variant_builder_add(&arguments, "v", value);
    call(kManagerPath, kMock, "EmitSignal",
         g_variant_new("(sssav)", kManager, signal, signature, &arguments));
}

void MockLoginManager::prepareFor(const char* what, bool begins) {
    emit((std::string("PrepareFor") + what).c_str(), "b", {g_variant_new_boolean(begins)});
}

void MockLoginManager::addSession(const char* identifier, unsigned user) {
    call(kManagerPath, kMock, "AddSession",
         g_variant_new("(ssusb)", identifier, ("seat" + std::to_string(user)).c_str(), user, "name", TRUE));
    emit("SessionNew", "so",
         {g_variant_new_string(identifier), g_variant_new_object_path(sessionPath(identifier).c_str())});
}

void MockLoginManager::removeSession(const char* identifier) {
    call(kManagerPath, kMock, "RemoveObject", g_variant_new("(s)", sessionPath(identifier).c_str()));
    emit("SessionRemoved", "so",
         {g_variant_new_string(identifier), g_variant_new_object_path(sessionPath(identifier).c_str())});
}

std::vector<std::string> MockLoginManager::inhibitors() {
    std::vector<std::string> result;
    GVariant* reply = callNow(connection_, kService, kManagerPath, kManager, "ListInhibitors", nullptr);
    if (reply == nullptr) return {"no answer"};
    GVariantIter* iterator = nullptr;
    g_variant_get(reply, "(a(ssssuu))", &iterator);
    const char* what = nullptr;
    const char* mode = nullptr;
    while (g_variant_iter_next(iterator, "(&sss&suu)", &what, nullptr, nullptr, &mode, nullptr, nullptr) !=
           0) {
        result.push_back(std::string(what) + " " + mode);
    }
    g_variant_iter_free(iterator);
    g_variant_unref(reply);
    return result;
}

MockScreenSaver::MockScreenSaver(PrivateBus& bus, const char* service, const char* path, bool isActive)
    : connection_(bus.connect()), service_(service), isActive_(isActive) {
    const std::string description =
        "<node><interface name='" + service_ +
        "'><method name='GetActive'><arg type='b' direction='out'/></method>"
        "<signal name='ActiveChanged'><arg type='b'/></signal></interface></node>";
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(description.c_str(), nullptr);
    static const GDBusInterfaceVTable table{
        [](GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant*,
           GDBusMethodInvocation* invocation, gpointer self) {
            g_dbus_method_invocation_return_value(
                invocation, g_variant_new("(b)", static_cast<MockScreenSaver*>(self)->isActive_));
        },
        nullptr,
        nullptr,
        {}};
    g_dbus_connection_register_object(connection_, path, node->interfaces[0], &table, this, nullptr, nullptr);
    g_dbus_node_info_unref(node);
    GVariant* reply = callNow(connection_, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "RequestName",
                              g_variant_new("(su)", service, 0));
    if (reply == nullptr) throw std::runtime_error("the name was not given");
    g_variant_unref(reply);
}

MockScreenSaver::~MockScreenSaver() {
    g_dbus_connection_close_sync(connection_, nullptr, nullptr);
    g_object_unref(connection_);
}

void MockScreenSaver::setActive(bool isActive, const char* path) {
    isActive_ = isActive;
    g_dbus_connection_emit_signal(connection_, nullptr, path, service_.c_str(), "ActiveChanged",
                                  g_variant_new("(b)", isActive), nullptr);
}

}  // namespace orvane
