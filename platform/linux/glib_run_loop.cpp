#include "platform/linux/glib_run_loop.h"

#include <glib.h>

#include <algorithm>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

namespace {

/// Microseconds on GLib's monotonic clock at which a delay from now is over.
gint64 dueTime(double delay) {
    const gint64 now = g_get_monotonic_time();
    if (!(delay > 0)) return now;
    const double microseconds = delay * 1e6;
    const gint64 longest = std::numeric_limits<gint64>::max() - now;
    return microseconds < static_cast<double>(longest) ? now + static_cast<gint64>(microseconds)
                                                       : now + longest;
}

}  // namespace

struct GlibRunLoop::Queue {
    struct Request {
        const void* target;
        std::string selector;
        std::function<void()> action;
    };
    struct Order {
        gint64 due;
        std::uint64_t sequence;
        // The check takes the zero that a defaulted comparison compares with for a pointer.
        // NOLINTNEXTLINE(modernize-use-nullptr)
        auto operator<=>(const Order&) const = default;
    };
    struct Source {
        GSource base;
        std::weak_ptr<Queue>* queue;
    };

    std::map<Order, Request> requests;
    std::uint64_t nextSequence = 0;
    GSource* source = nullptr;

    void scheduleNext() {
        if (source) g_source_set_ready_time(source, requests.empty() ? -1 : requests.begin()->first.due);
    }

    void runDueRequests() {
        const gint64 now = g_get_monotonic_time();
        // What the actions ask for meanwhile waits for the next round, so that the host's other work gets its
        // turn.
        const std::uint64_t end = nextSequence;
        for (auto next = requests.begin(); next != requests.end() && next->first.due <= now;) {
            if (next->first.sequence >= end) {
                ++next;
                continue;
            }
            const Order order = next->first;
            const auto action = std::move(next->second.action);
            requests.erase(next);
            // An action may run the main loop itself.
            scheduleNext();
            action();
            next = requests.upper_bound(order);
        }
        scheduleNext();
    }

    template <class Condition>
    void cancel(Condition condition) {
        // Actions are destroyed at the end only: what they hold may cancel requests of its own when it goes.
        std::vector<std::function<void()>> cancelled;
        for (auto& [order, request] : requests) {
            if (condition(request)) cancelled.push_back(std::move(request.action));
        }
        std::erase_if(requests, [&](const auto& entry) { return condition(entry.second); });
        scheduleNext();
    }

    static gboolean dispatch(GSource* source, GSourceFunc, gpointer) {
        // The action may end the run loop; the queue has to last until it returns.
        if (const auto queue = reinterpret_cast<Source*>(source)->queue->lock()) queue->runDueRequests();
        return G_SOURCE_CONTINUE;
    }
    static void finalize(GSource* source) { delete reinterpret_cast<Source*>(source)->queue; }
};

GlibRunLoop::GlibRunLoop() : queue_(std::make_shared<Queue>()) {
    static GSourceFuncs functions{nullptr, nullptr, Queue::dispatch, Queue::finalize, nullptr, nullptr};
    queue_->source = g_source_new(&functions, sizeof(Queue::Source));
    reinterpret_cast<Queue::Source*>(queue_->source)->queue = new std::weak_ptr<Queue>(queue_);
    g_source_set_static_name(queue_->source, "orvane run loop");
    g_source_set_can_recurse(queue_->source, TRUE);
    g_source_attach(queue_->source, nullptr);
}

GlibRunLoop::~GlibRunLoop() {
    g_source_destroy(queue_->source);
    g_source_unref(std::exchange(queue_->source, nullptr));
    queue_->cancel([](const auto&) { return true; });
}

void GlibRunLoop::performSelector(const void* target, std::string_view selector, double delay,
                                  std::function<void()> action) {
    queue_->requests.emplace(Queue::Order{dueTime(delay), queue_->nextSequence++},
                             Queue::Request{target, std::string(selector), std::move(action)});
    queue_->scheduleNext();
}

void GlibRunLoop::cancelPreviousPerformRequests(const void* target) {
    queue_->cancel([=](const auto& request) { return request.target == target; });
}

void GlibRunLoop::cancelPreviousPerformRequests(const void* target, std::string_view selector) {
    queue_->cancel(
        [=](const auto& request) { return request.target == target && request.selector == selector; });
}

std::size_t GlibRunLoop::pendingRequestCount(const void* target) const {
    return static_cast<std::size_t>(
        std::count_if(queue_->requests.begin(), queue_->requests.end(),
                      [=](const auto& entry) { return entry.second.target == target; }));
}

}  // namespace orvane
