#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/accessibility/atspi.h"

namespace orvane {

/// A window as its application describes it.
struct AtspiWindow {
    atspi::Object object;
    std::int32_t process = 0;
    std::optional<std::string> title;
    std::uint32_t role = 0;
    bool isActive = false;
    /// On screen, as far as its application knows.
    bool isShowing = false;
};

/// One look at the windows of all applications, without waiting: all are asked at once, and those that do not
/// answer soon are left out. Main thread only.
class AtspiWalk : public std::enable_shared_from_this<AtspiWalk> {
  public:
    /// The windows in the order of the registry, or none when the registry did not answer.
    using Done = std::function<void(std::optional<std::vector<AtspiWindow>>)>;

    /// Begins. `done` is called once on the main loop, unless the walk is cancelled or the bus closed before.
    static std::shared_ptr<AtspiWalk> start(BusConnection& bus, std::int32_t excludedProcess, Done done);
    /// Forgets `done`.
    void cancel() { done_ = nullptr; }

  private:
    using Handler = std::function<void(GVariant* values)>;

    AtspiWalk(BusConnection& bus, std::int32_t excludedProcess, Done done);
    void ask(const BusObject& object, const char* method, GVariant* arguments, Handler handler);
    void visitApplication(const atspi::Object& application);
    void visitWindow(const atspi::Object& object, std::int32_t process);
    void finish();

    BusConnection& bus_;
    const std::int32_t excludedProcess_;
    Done done_;
    int pending_ = 0;
    bool hasRegistry_ = false;
    /// Shared with the answers that are still to come.
    std::vector<std::shared_ptr<AtspiWindow>> windows_;
};

}  // namespace orvane
