#include "foundation/notification_center.h"

namespace orvane {

struct NotificationCenter::Registration {
    const void* observer;
    Handler handler;
    std::string name;
    const void* object;
    bool ended = false;
};

NotificationCenter::NotificationCenter() = default;
NotificationCenter::~NotificationCenter() = default;

void NotificationCenter::addObserver(const void* observer, Handler handler, std::string_view name,
                                     const void* object) {
    registrations_.push_back(std::make_shared<Registration>(
        Registration{observer, std::move(handler), std::string(name), object}));
}

void NotificationCenter::removeObserver(const void* observer) {
    std::erase_if(registrations_, [&](const auto& registration) {
        if (registration->observer != observer) return false;
        registration->ended = true;
        return true;
    });
}

void NotificationCenter::post(const Notification& notification) {
    // A copy: observers come and go while they are told.
    const auto present = registrations_;
    for (const auto& registration : present) {
        const bool named = registration->name.empty() || registration->name == notification.name;
        const bool sent = !registration->object || registration->object == notification.object;
        if (named && sent && !registration->ended) registration->handler(notification);
    }
}

}  // namespace orvane
