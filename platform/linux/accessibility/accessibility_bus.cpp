#include "platform/linux/accessibility/accessibility_bus.h"

namespace orvane {

namespace {

constexpr const char* kService = "org.a11y.Bus";
constexpr const char* kPath = "/org/a11y/bus";

}  // namespace

AccessibilityBus::AccessibilityBus(SharedBus& sessionBus) : sessionBus_(sessionBus) { sessionBus.add(*this); }

bool AccessibilityBus::isDecided() const {
    if (session_ == nullptr) return sessionBus_.isDecided();
    return isAddressDecided_ && (!link_ || link_->isDecided());
}

void AccessibilityBus::busOpened(BusConnection& bus) {
    session_ = &bus;
    isAddressDecided_ = false;
    launcherWatch_ = bus.watchName(kService, [this](bool isOwned) { launcherOwned(isOwned); });
}

void AccessibilityBus::busClosed() {
    launcherWatch_ = {};
    session_ = nullptr;
    launcherOwned(false);
}

void AccessibilityBus::launcherOwned(bool isOwned) {
    ++owner_;
    close();
    isAddressDecided_ = !isOwned;
    if (!isOwned) return;
    session_->call({kService, kPath, kService}, "GetAddress", nullptr,
                   [this, owner = owner_](GVariant* values, GUnixFDList*) {
                       if (owner != owner_) return;
                       isAddressDecided_ = true;
                       const char* address = "";
                       if (values != nullptr && g_variant_is_of_type(values, G_VARIANT_TYPE("(s)"))) {
                           g_variant_get(values, "(&s)", &address);
                       }
                       open(address);
                   });
}

void AccessibilityBus::open(const char* address) {
    // No address: accessibility is off.
    if (*address == '\0') return;
    link_ = std::make_unique<BusLink>(address);
    link_->onOpened = [this](BusConnection& bus) {
        for (auto* user : users_) user->busOpened(bus);
    };
    link_->onClosed = [this] {
        for (auto* user : users_) user->busClosed();
    };
    link_->open();
}

void AccessibilityBus::close() {
    if (isOpen()) {
        for (auto* user : users_) user->busClosed();
    }
    link_.reset();
}

}  // namespace orvane
