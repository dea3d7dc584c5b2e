#pragma once

#include <wayland-server.h>

#include <deque>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

namespace orvane {

/// A compositor that offers a seat and ext-idle-notify and does what the test says, on a thread of its own.
class FakeCompositor {
  public:
    /// Listens on "wayland-7" in $XDG_RUNTIME_DIR.
    explicit FakeCompositor(std::uint32_t idleVersion);
    ~FakeCompositor();
    FakeCompositor(const FakeCompositor&) = delete;
    FakeCompositor& operator=(const FakeCompositor&) = delete;

    void addSeat();
    /// The seat that was added last goes.
    void removeSeat();
    /// The user of a seat, counted from 0, has touched nothing for the time-out, or touches something again.
    void idle(std::size_t seat);
    void resume(std::size_t seat);
    /// Says nothing any more, or speaks again.
    void hold(bool isHeld);
    /// Kinds of the notifications in use: "input" or "held back".
    std::vector<std::string> notifications();

  private:
    struct Notification {
        wl_resource* resource;
        wl_resource* seat;
        std::string kind;
    };

    void call(const std::function<void()>& action);
    void notify(std::size_t seat, void (*send)(wl_resource*));
    void watch(wl_client* client, std::uint32_t id, wl_resource* seat, const char* kind);

    wl_display* display_;
    int wakeUp_[2];
    wl_event_source* wakeUpSource_ = nullptr;
    std::vector<wl_global*> seats_;
    /// By the place of its mark a client's object is known as one of a seat; not reused.
    std::deque<char> marks_;
    std::vector<Notification> notifications_;
    std::promise<void> resumed_;
    std::thread thread_;
};

}  // namespace orvane
