#include "platform/linux/session/bus_link.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace orvane {

namespace {

constexpr unsigned kFirstRetryMilliseconds = 1000;
constexpr unsigned kLastRetryMilliseconds = 60000;

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::string socketAddress(const std::string& path) {
    char* escaped = g_dbus_address_escape_value(path.c_str());
    std::string result = std::string("unix:path=") + escaped;
    g_free(escaped);
    return result;
}

}  // namespace

std::string BusLink::sessionBusAddress() {
    // GLib's own look-up would start a bus where there is none.
    if (auto address = environment("DBUS_SESSION_BUS_ADDRESS"); !address.empty()) return address;
    const auto runtime = environment("XDG_RUNTIME_DIR");
    return runtime.empty() ? std::string() : socketAddress(runtime + "/bus");
}

std::string BusLink::systemBusAddress() {
    if (auto address = environment("DBUS_SYSTEM_BUS_ADDRESS"); !address.empty()) return address;
    // The well-known address of the D-Bus specification.
    return socketAddress("/var/run/dbus/system_bus_socket");
}

BusLink::BusLink(std::string address)
    : address_(std::move(address)),
      cancellable_(g_cancellable_new()),
      retryMilliseconds_(kFirstRetryMilliseconds) {}

BusLink::~BusLink() {
    g_cancellable_cancel(cancellable_);
    g_object_unref(cancellable_);
}

void BusLink::open() {
    if (address_.empty()) {
        problem_ = "no address is set";
        isDecided_ = true;
        return;
    }
    g_dbus_connection_new_for_address(
        address_.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, cancellable_, &BusLink::finish, this);
}

void BusLink::finish(GObject*, GAsyncResult* result, gpointer data) {
    GError* error = nullptr;
    GDBusConnection* connection = g_dbus_connection_new_for_address_finish(result, &error);
    if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED)) {
        g_clear_error(&error);
        return;
    }
    auto* self = static_cast<BusLink*>(data);
    self->isDecided_ = true;
    if (connection != nullptr) {
        self->opened(connection);
        g_object_unref(connection);
    } else {
        self->problem_ = error->message;
        g_clear_error(&error);
        self->openLater();
    }
}

void BusLink::opened(GDBusConnection* connection) {
    retryMilliseconds_ = kFirstRetryMilliseconds;
    problem_.clear();
    connection_ = std::make_unique<BusConnection>(connection);
    closedWatch_ = connection_->watchClosed([this] { closed(); });
    if (onOpened) onOpened(*connection_);
}

void BusLink::closed() {
    problem_ = "the bus went away";
    if (onClosed) onClosed();
    closedWatch_ = {};
    connection_.reset();
    openLater();
}

void BusLink::openLater() {
    retryTimer_.start(retryMilliseconds_, [this] { open(); });
    retryMilliseconds_ = std::min(2 * retryMilliseconds_, kLastRetryMilliseconds);
}

}  // namespace orvane
