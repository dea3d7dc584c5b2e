#include "tests/platform/session/private_bus.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace orvane {

PrivateBus::PrivateBus(const std::string& folder) : folder_(folder) {
    if (folder_.empty()) {
        char* made = g_dir_make_tmp("orvane-bus-XXXXXX", nullptr);
        folder_ = made;
        g_free(made);
    }
    address_ = "unix:path=" + folder_ + "/socket";
    std::ofstream(folder_ + "/bus.conf")
        << "<busconfig><type>custom</type><listen>" << address_
        << "</listen><policy context=\"default\"><allow user=\"*\"/><allow send_destination=\"*\" "
           "eavesdrop=\"true\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/>"
           "</policy></busconfig>";
}

PrivateBus::~PrivateBus() {
    kill();
    std::error_code error;
    std::filesystem::remove_all(folder_, error);
}

void PrivateBus::start() {
    std::filesystem::remove(folder_ + "/socket");
    daemon_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"dbus-daemon", "--nofork", "--nopidfile",
                                 "--config-file=" + folder_ + "/bus.conf", "--print-address=1"});
    if (daemon_->readLine().empty()) throw std::runtime_error("dbus-daemon did not start");
}

GDBusConnection* PrivateBus::connect() {
    GError* error = nullptr;
    auto* connection = g_dbus_connection_new_for_address_sync(
        address_.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, &error);
    if (connection == nullptr) throw std::runtime_error(error->message);
    return connection;
}

}  // namespace orvane
