#pragma once

#include <functional>
#include <mutex>
#include <string>

#include "platform/host_application.h"
#include "platform/log_sink.h"

namespace orvane {

/// Hands presented errors to a callback; without one they go nowhere.
class ORVANE_EXPORT SimulatedHostApplication : public HostApplication {
  public:
    using Handler = std::function<void(const Error&)>;

    void presentError(const Error& error) override {
        if (handler_) handler_(error);
    }
    void setErrorHandler(Handler handler) { handler_ = std::move(handler); }

  private:
    Handler handler_;
};

/// Hands log lines to a callback, one at a time; without one they go nowhere.
class ORVANE_EXPORT SimulatedLogSink : public LogSink {
  public:
    using Handler = std::function<void(std::string_view)>;

    void log(std::string_view line) override {
        const std::lock_guard lock(mutex_);
        if (handler_) handler_(line);
    }
    /// The handler is called on the thread that logs; it must not log itself.
    void setHandler(Handler handler) {
        const std::lock_guard lock(mutex_);
        handler_ = std::move(handler);
    }

  private:
    std::mutex mutex_;
    Handler handler_;
};

}  // namespace orvane
