#pragma once

#include "foundation/internal.h"
#include "platform/host_application.h"
#include "platform/log_sink.h"

namespace orvane {

/// The program that has loaded the library. Shows errors through the presenter that the program has
/// registered, and else writes them to the log.
class LinuxHostApplication : public HostApplication {
  public:
    explicit LinuxHostApplication(LogSink& log);

    void presentError(const Error& error) override;

  private:
    LogSink& log_;
};

}  // namespace orvane
