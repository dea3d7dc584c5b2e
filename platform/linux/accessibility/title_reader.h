#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/accessibility/atspi.h"
#include "platform/linux/session/shared_bus.h"

namespace orvane {

/// Asks an application for the title of its focused window, within a deadline. Main thread only.
class TitleReader : public BusUser {
  public:
    /// The longest that all questions for one title keep the main loop waiting.
    static constexpr int longestWaitMilliseconds = 40;
    /// So long an application is not asked again after it gave no answer in time.
    static constexpr int silenceMilliseconds = 3000;

    bool isOpen() const { return bus_ != nullptr; }
    struct Answer {
        /// Absent when the window has none.
        std::optional<std::string> title;
    };
    /// None when the process has no focused window that can be read in time.
    std::optional<Answer> focusedWindow(std::int32_t process);

    void busOpened(BusConnection& bus) override;
    void busClosed() override;

  private:
    class Questions;

    std::optional<Answer> ask(std::int32_t process, Questions& questions);

    BusConnection* bus_ = nullptr;
    /// By the names of their connections, which are never used twice.
    std::map<std::string, std::int32_t> processes_;
    /// Processes that did not answer, with the time when they may be asked again, in microseconds on GLib's
    /// monotonic clock. Process 0 is the registry of applications.
    std::map<std::int32_t, std::int64_t> silentUntil_;
};

}  // namespace orvane
