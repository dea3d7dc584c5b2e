#pragma once

#include <string>

#include "foundation/internal.h"
#include "platform/log_sink.h"

namespace orvane {

/// The system log, under the host's own name there, and standard error as well when that is a terminal. Any
/// thread.
class SystemLog : public LogSink {
  public:
    void log(std::string_view line) override;

    /// The text on one line and safe for a terminal: control characters and bytes that are not UTF-8 are
    /// written as escapes such as "\n" and "\x1b".
    static std::string visibleLine(std::string_view text);
};

}  // namespace orvane
