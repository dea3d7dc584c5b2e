#include "platform/linux/session/shared_bus.h"

#include <utility>

namespace orvane {

SharedBus::SharedBus(std::string address) : link_(std::move(address)) {
    link_.onOpened = [this](BusConnection& bus) {
        for (auto* user : users_) user->busOpened(bus);
    };
    link_.onClosed = [this] {
        for (auto* user : users_) user->busClosed();
    };
}

}  // namespace orvane
