#include "platform/linux/session/bus_connection.h"

#include <utility>

#include "platform/linux/session/reply_values.h"

namespace orvane {

namespace {

template <typename Handler>
void destroyHandler(gpointer handler) {
    delete static_cast<Handler*>(handler);
}

void finishCall(GObject* source, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<BusConnection::Reply> reply(static_cast<BusConnection::Reply*>(data));
    GUnixFDList* descriptors = nullptr;
    GError* error = nullptr;
    const Variant values(g_dbus_connection_call_with_unix_fd_list_finish(G_DBUS_CONNECTION(source),
                                                                         &descriptors, result, &error));
    // Cancelled: who asked may be gone.
    const bool isWanted = !g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED);
    g_clear_error(&error);
    if (isWanted) (*reply)(values.get(), descriptors);
    g_clear_object(&descriptors);
}

void tellSignal(GDBusConnection*, const gchar*, const gchar* path, const gchar*, const gchar*,
                GVariant* values, gpointer handler) {
    (*static_cast<BusConnection::Signal*>(handler))(path, values);
}

using OwnerHandler = std::function<void(bool)>;

void tellOwned(GDBusConnection*, const gchar*, const gchar*, gpointer handler) {
    (*static_cast<OwnerHandler*>(handler))(true);
}

void tellUnowned(GDBusConnection*, const gchar*, gpointer handler) {
    (*static_cast<OwnerHandler*>(handler))(false);
}

void tellClosed(GDBusConnection*, gboolean, GError*, gpointer handler) {
    // Copied: the handler may end the watch that holds it.
    const auto copy = *static_cast<std::function<void()>*>(handler);
    copy();
}

void destroyClosedHandler(gpointer handler, GClosure*) { destroyHandler<std::function<void()>>(handler); }

void takeCall(GDBusConnection*, const gchar* sender, const gchar*, const gchar*, const gchar*,
              GVariant* values, GDBusMethodInvocation* invocation, gpointer receiver) {
    const gchar* text = nullptr;
    g_variant_get(values, "(&s)", &text);
    (*static_cast<BusConnection::Receiver*>(receiver))(sender, text);
    g_dbus_method_invocation_return_value(invocation, nullptr);
}

}  // namespace

BusConnection::BusConnection(GDBusConnection* connection)
    : connection_(G_DBUS_CONNECTION(g_object_ref(connection))), cancellable_(g_cancellable_new()) {
    // A bus that goes away must never end the host.
    g_dbus_connection_set_exit_on_close(connection_, FALSE);
}

BusConnection::~BusConnection() {
    g_cancellable_cancel(cancellable_);
    g_object_unref(cancellable_);
    g_dbus_connection_close(connection_, nullptr, nullptr, nullptr);
    g_object_unref(connection_);
}

void BusConnection::call(const BusObject& object, const char* method, GVariant* arguments, Reply reply,
                         int timeoutMilliseconds) {
    g_dbus_connection_call_with_unix_fd_list(connection_, object.service.c_str(), object.path.c_str(),
                                             object.interface.c_str(), method, arguments, nullptr,
                                             G_DBUS_CALL_FLAGS_NO_AUTO_START, timeoutMilliseconds, nullptr,
                                             cancellable_, &finishCall, new Reply(std::move(reply)));
}

Variant BusConnection::callNow(const BusObject& object, const char* method, GVariant* arguments,
                               int timeoutMilliseconds, bool& isLate) {
    GError* error = nullptr;
    Variant values(g_dbus_connection_call_sync(
        connection_, object.service.c_str(), object.path.c_str(), object.interface.c_str(), method, arguments,
        nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, timeoutMilliseconds, nullptr, &error));
    if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT)) isLate = true;
    g_clear_error(&error);
    return values;
}

void BusConnection::getBoolean(const BusObject& object, const char* property,
                               std::function<void(std::optional<bool>)> reply) {
    call({object.service, object.path, "org.freedesktop.DBus.Properties"}, "Get",
         g_variant_new("(ss)", object.interface.c_str(), property),
         [reply = std::move(reply)](GVariant* values, GUnixFDList*) { reply(booleanPropertyIn(values)); });
}

BusToken BusConnection::subscribe(const BusObject& object, const char* signal, Signal handler) {
    const auto given = [](const char* text) { return *text != '\0' ? text : nullptr; };
    const guint subscription = g_dbus_connection_signal_subscribe(
        connection_, given(object.service.c_str()), object.interface.c_str(), given(signal),
        given(object.path.c_str()), nullptr, G_DBUS_SIGNAL_FLAGS_NONE, &tellSignal,
        new Signal(std::move(handler)), &destroyHandler<Signal>);
    return BusToken([connection = connection_, subscription] {
        g_dbus_connection_signal_unsubscribe(connection, subscription);
    });
}

BusToken BusConnection::watchName(const std::string& name, std::function<void(bool)> handler) {
    const guint watch = g_bus_watch_name_on_connection(
        connection_, name.c_str(), G_BUS_NAME_WATCHER_FLAGS_NONE, &tellOwned, &tellUnowned,
        new OwnerHandler(std::move(handler)), &destroyHandler<OwnerHandler>);
    return BusToken([watch] { g_bus_unwatch_name(watch); });
}

std::string BusConnection::ownName() const {
    const char* name = g_dbus_connection_get_unique_name(connection_);
    return name != nullptr ? name : "";
}

BusToken BusConnection::receive(const std::string& path, const std::string& interface,
                                const std::string& method, Receiver receiver) {
    const std::string description = "<node><interface name='" + interface + "'><method name='" + method +
                                    "'><arg type='s' direction='in'/></method></interface></node>";
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(description.c_str(), nullptr);
    static const GDBusInterfaceVTable table{&takeCall, nullptr, nullptr, {}};
    const guint registration = g_dbus_connection_register_object(
        connection_, path.c_str(), node->interfaces[0], &table, new Receiver(std::move(receiver)),
        &destroyHandler<Receiver>, nullptr);
    g_dbus_node_info_unref(node);
    return BusToken([connection = connection_, registration] {
        g_dbus_connection_unregister_object(connection, registration);
    });
}

BusToken BusConnection::watchClosed(std::function<void()> handler) {
    const gulong watch = g_signal_connect_data(connection_, "closed", G_CALLBACK(&tellClosed),
                                               new std::function<void()>(std::move(handler)),
                                               &destroyClosedHandler, GConnectFlags{});
    return BusToken([connection = connection_, watch] { g_signal_handler_disconnect(connection, watch); });
}

}  // namespace orvane
