#pragma once

#include <string_view>

#include "foundation/export.h"

namespace orvane {

/// Where the library's log lines go. Any thread.
class ORVANE_EXPORT LogSink {
  public:
    virtual ~LogSink() = default;

    /// Writes one line, which carries no line break of its own.
    virtual void log(std::string_view line) = 0;
};

}  // namespace orvane
