#include "tests/platform/wayland/fake_compositor.h"

#include <unistd.h>
#include <wayland-protocols/ext-idle-notify-v1-server.h>

#include <algorithm>
#include <stdexcept>

namespace orvane {

namespace {

void bindSeat(wl_client* client, void* mark, std::uint32_t version, std::uint32_t id) {
    auto* resource = wl_resource_create(client, &wl_seat_interface, static_cast<int>(version), id);
    wl_resource_set_implementation(resource, nullptr, mark, nullptr);
}

}  // namespace

FakeCompositor::FakeCompositor(std::uint32_t idleVersion) : display_(wl_display_create()) {
    if (wl_display_add_socket(display_, "wayland-7") != 0 || pipe(wakeUp_) != 0) {
        throw std::runtime_error("no compositor");
    }
    wl_global_create(display_, &ext_idle_notifier_v1_interface, static_cast<int>(idleVersion), this,
                     [](wl_client* client, void* self, std::uint32_t version, std::uint32_t id) {
                         static const struct ext_idle_notifier_v1_interface kRequests {
                             [](wl_client*, wl_resource* resource) { wl_resource_destroy(resource); },
                                 [](wl_client* by, wl_resource* notifier, std::uint32_t newId, std::uint32_t,
                                    wl_resource* seat) {
                                     static_cast<FakeCompositor*>(wl_resource_get_user_data(notifier))
                                         ->watch(by, newId, seat, "held back");
                                 },
                                 [](wl_client* by, wl_resource* notifier, std::uint32_t newId, std::uint32_t,
                                    wl_resource* seat) {
                                     static_cast<FakeCompositor*>(wl_resource_get_user_data(notifier))
                                         ->watch(by, newId, seat, "input");
                                 }
                         };
                         auto* resource = wl_resource_create(client, &ext_idle_notifier_v1_interface,
                                                             static_cast<int>(version), id);
                         wl_resource_set_implementation(resource, &kRequests, self, nullptr);
                     });
    wakeUpSource_ = wl_event_loop_add_fd(
        wl_display_get_event_loop(display_), wakeUp_[0], WL_EVENT_READABLE,
        [](int descriptor, std::uint32_t, void*) {
            std::packaged_task<void()>* task = nullptr;
            if (read(descriptor, &task, sizeof task) == sizeof task) (*task)();
            return 0;
        },
        nullptr);
    thread_ = std::thread([this] { wl_display_run(display_); });
}

FakeCompositor::~FakeCompositor() {
    call([this] { wl_display_terminate(display_); });
    thread_.join();
    wl_event_source_remove(wakeUpSource_);
    wl_display_destroy_clients(display_);
    wl_display_destroy(display_);
    close(wakeUp_[0]);
    close(wakeUp_[1]);
}

void FakeCompositor::call(const std::function<void()>& action) {
    std::packaged_task<void()> task(action);
    auto* pointer = &task;
    if (write(wakeUp_[1], &pointer, sizeof pointer) != sizeof pointer) throw std::runtime_error("pipe");
    task.get_future().get();
}

void FakeCompositor::hold(bool isHeld) {
    if (!isHeld) {
        resumed_.set_value();
        return;
    }
    resumed_ = {};
    // Never deleted before the thread has taken it, which is when it is held.
    static std::packaged_task<void()> task;
    task = std::packaged_task<void()>([this] { resumed_.get_future().wait(); });
    auto* pointer = &task;
    if (write(wakeUp_[1], &pointer, sizeof pointer) != sizeof pointer) throw std::runtime_error("pipe");
}

void FakeCompositor::addSeat() {
    call([this] {
        seats_.push_back(
            wl_global_create(display_, &wl_seat_interface, 1, &marks_.emplace_back(), &bindSeat));
    });
}

void FakeCompositor::removeSeat() {
    call([this] {
        wl_global_destroy(seats_.back());
        seats_.pop_back();
    });
}

void FakeCompositor::watch(wl_client* client, std::uint32_t id, wl_resource* seat, const char* kind) {
    static const struct ext_idle_notification_v1_interface kRequests {
        [](wl_client*, wl_resource* resource) { wl_resource_destroy(resource); }
    };
    auto* resource = wl_resource_create(client, &ext_idle_notification_v1_interface, 1, id);
    wl_resource_set_implementation(resource, &kRequests, this, [](wl_resource* destroyed) {
        auto& all = static_cast<FakeCompositor*>(wl_resource_get_user_data(destroyed))->notifications_;
        std::erase_if(all, [=](const auto& each) { return each.resource == destroyed; });
    });
    notifications_.push_back({resource, seat, kind});
}

void FakeCompositor::notify(std::size_t seat, void (*send)(wl_resource*)) {
    call([&] {
        for (const auto& each : notifications_) {
            if (wl_resource_get_user_data(each.seat) == wl_global_get_user_data(seats_[seat]))
                send(each.resource);
        }
    });
}

void FakeCompositor::idle(std::size_t seat) { notify(seat, &ext_idle_notification_v1_send_idled); }

void FakeCompositor::resume(std::size_t seat) { notify(seat, &ext_idle_notification_v1_send_resumed); }

std::vector<std::string> FakeCompositor::notifications() {
    std::vector<std::string> result;
    call([&] {
        for (const auto& each : notifications_) result.push_back(each.kind);
    });
    return result;
}

}  // namespace orvane
