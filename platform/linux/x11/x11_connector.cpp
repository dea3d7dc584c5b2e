#include "platform/linux/x11/x11_connector.h"

#include <glib.h>

#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace orvane {

struct X11Connector::Attempt {
    std::string display;
    std::mutex mutex;
    std::condition_variable ended;
    bool hasEnded = false;
    std::unique_ptr<X11Connection> connection;
    /// For `tell` alone, which lets go of it.
    std::shared_ptr<Attempt>* told = nullptr;
    /// Main thread only; empty once nobody waits for the outcome any more.
    Handler handler;
};

X11Connector::X11Connector(std::string display) : display_(std::move(display)) {}

X11Connector::~X11Connector() {
    if (attempt_) attempt_->handler = nullptr;
}

void X11Connector::connect(Handler handler) {
    attempt_ = std::make_shared<Attempt>();
    attempt_->display = display_;
    attempt_->handler = std::move(handler);
    attempt_->told = new std::shared_ptr<Attempt>(attempt_);
    // A thread of its own rather than one of a pool: a server that hangs would take that away from the host.
    try {
        std::thread([attempt = attempt_] { end(*attempt, X11Connection::open(attempt->display)); }).detach();
    } catch (const std::system_error&) {
        end(*attempt_, nullptr);  // no thread to be had: as if no server answered
    }
}

void X11Connector::end(Attempt& attempt, std::unique_ptr<X11Connection> connection) {
    {
        const std::lock_guard lock(attempt.mutex);
        attempt.connection = std::move(connection);
        attempt.hasEnded = true;
    }
    attempt.ended.notify_all();
    g_idle_add_full(G_PRIORITY_DEFAULT, &X11Connector::tell, attempt.told, &X11Connector::release);
}

int X11Connector::tell(void* data) {
    const auto attempt = *static_cast<std::shared_ptr<Attempt>*>(data);
    const auto handler = std::exchange(attempt->handler, nullptr);
    std::unique_ptr<X11Connection> connection;
    {
        const std::lock_guard lock(attempt->mutex);
        connection = std::move(attempt->connection);
    }
    if (handler) handler(std::move(connection));
    return G_SOURCE_REMOVE;
}

void X11Connector::release(void* data) { delete static_cast<std::shared_ptr<Attempt>*>(data); }

bool X11Connector::wait(std::chrono::milliseconds limit, std::unique_ptr<X11Connection>& connection) {
    std::unique_lock lock(attempt_->mutex);
    if (!attempt_->ended.wait_for(lock, limit, [this] { return attempt_->hasEnded; })) return false;
    attempt_->handler = nullptr;
    connection = std::move(attempt_->connection);
    return true;
}

}  // namespace orvane
