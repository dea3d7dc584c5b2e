#pragma once

#include "foundation/internal.h"
#include "platform/linux/application_directory.h"
#include "platform/linux/desktop_backend.h"
#include "platform/window_server.h"

namespace orvane {

/// Windows and idle time of the running desktop; empty and 0 without one. Main thread only.
class LinuxWindowServer : public WindowServer {
  public:
    explicit LinuxWindowServer(ApplicationDirectory& directory);

    /// The desktop to ask from now on; none when there is none. It must outlive its use here.
    void setBackend(DesktopBackend* backend);

    /// Desktops tell only windows on screen and leave the background out, so these options change nothing. A
    /// reference window other than 0 leaves that one alone.
    std::vector<WindowIdentifier> windowListCreate(std::uint32_t options,
                                                   WindowIdentifier referenceWindow) override;
    std::vector<Dictionary> windowListCreateDescriptionFromArray(
        std::span<const WindowIdentifier> windows) override;
    double secondsSinceLastEventType(std::int32_t state, std::uint32_t eventType) override;

  private:
    Dictionary describe(const DesktopWindow& window);

    ApplicationDirectory& directory_;
    DesktopBackend* backend_ = nullptr;
    /// What the last list was made of: its descriptions then need no second look at the desktop.
    std::vector<DesktopWindow> snapshot_;
};

}  // namespace orvane
