#include "foundation/notification_center.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(NotificationCenter, DeliversByNameAndObjectInOrder) {
    NotificationCenter center;
    std::string told;
    const int sender = 0, other = 0, observer = 0;
    const auto tell = [&](char mark) { return [&told, mark](const Notification&) { told += mark; }; };
    center.addObserver(&observer, tell('a'), "saved", &sender);
    center.addObserver(&observer, tell('b'), "saved");
    center.addObserver(&observer, tell('c'), {}, &sender);
    center.addObserver(&other, tell('d'));
    const auto post = [&](std::string_view name, const void* object) {
        told.clear();
        center.post(name, object, {{"count", 1}});
        return told;
    };
    EXPECT_EQ(post("saved", &sender), "abcd");
    EXPECT_EQ(post("saved", nullptr), "bd");
    EXPECT_EQ(post("closed", &sender), "cd");
    EXPECT_EQ(post("closed", &other), "d");
    center.removeObserver(&observer);
    EXPECT_EQ(post("saved", &sender), "d");
}

TEST(NotificationCenter, ObserversComeAndGoDuringDelivery) {
    auto center = std::make_unique<NotificationCenter>();
    std::string told;
    const int first = 0, second = 0, third = 0;
    center->addObserver(&first, [&](const Notification& notification) {
        told += 'a';
        center->removeObserver(&first);
        center->removeObserver(&second);
        center->addObserver(&third, [&](const Notification&) { told += 'c'; });
        if (notification.name == "outer") center->post("inner");
        told += ')';  // the handler's own captures are still there
    });
    center->addObserver(&second, [&](const Notification&) { told += 'b'; });
    center->post("outer");
    EXPECT_EQ(told, "ac)");
    center->addObserver(&first, [&](const Notification&) { center.reset(); });
    center->post("last");
    EXPECT_EQ(told, "ac)c");
}

}  // namespace
}  // namespace orvane
