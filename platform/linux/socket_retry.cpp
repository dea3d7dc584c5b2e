#include "platform/linux/socket_retry.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace orvane {

namespace {

constexpr unsigned kFirstWaitMilliseconds = 250;
constexpr unsigned kLastWaitMilliseconds = 4000;
// A socket's file is there a moment before somebody listens.
constexpr unsigned kAppearedWaitMilliseconds = 50;

}  // namespace

SocketRetry::SocketRetry(std::string folder, std::string prefix, std::function<void()> attempt)
    : folder_(std::move(folder)),
      prefix_(std::move(prefix)),
      attempt_(std::move(attempt)),
      waitMilliseconds_(kFirstWaitMilliseconds) {}

SocketRetry::~SocketRetry() { endWatch(); }

void SocketRetry::start() {
    watch();
    const auto wait = waitMilliseconds_;
    waitMilliseconds_ = std::min(2 * waitMilliseconds_, kLastWaitMilliseconds);
    timer_.start(wait, [this] { attempt(); });
}

void SocketRetry::stop() {
    timer_.cancel();
    endWatch();
    waitMilliseconds_ = kFirstWaitMilliseconds;
}

void SocketRetry::attempt() {
    // Copied, since the call may destroy this.
    const auto call = attempt_;
    call();
}

void SocketRetry::watch() {
    if (monitor_ != nullptr || folder_.empty()) return;
    GFile* folder = g_file_new_for_path(folder_.c_str());
    monitor_ = g_file_monitor_directory(folder, G_FILE_MONITOR_NONE, nullptr, nullptr);
    g_object_unref(folder);
    // Without it, the timer alone does.
    if (monitor_ == nullptr) return;
    g_file_monitor_set_rate_limit(monitor_, 0);
    g_signal_connect(monitor_, "changed", G_CALLBACK(&SocketRetry::fileChanged), this);
}

void SocketRetry::endWatch() {
    if (monitor_ == nullptr) return;
    g_signal_handlers_disconnect_by_data(monitor_, this);
    g_file_monitor_cancel(monitor_);
    g_clear_object(&monitor_);
}

void SocketRetry::fileChanged(GFileMonitor*, GFile* file, GFile*, GFileMonitorEvent event, gpointer self) {
    if (event != G_FILE_MONITOR_EVENT_CREATED) return;
    auto& retry = *static_cast<SocketRetry*>(self);
    const std::unique_ptr<char, decltype(&g_free)> name(g_file_get_basename(file), g_free);
    if (!name || !std::string_view(name.get()).starts_with(retry.prefix_)) return;
    retry.waitMilliseconds_ = kFirstWaitMilliseconds;
    retry.timer_.start(kAppearedWaitMilliseconds, [&retry] { retry.attempt(); });
}

}  // namespace orvane
