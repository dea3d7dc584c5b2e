#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"
#include "platform/linux/desktop_entries.h"
#include "platform/linux/process_info.h"

// The name is GIO's.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
using GAppInfoMonitor = struct _GAppInfoMonitor;

namespace orvane {

/// Knows the installed applications by their desktop entries and tells which one a window belongs to. Entries
/// are read when they are first needed and again after applications were installed or removed. Main thread
/// only.
class ApplicationDirectory {
  public:
    explicit ApplicationDirectory(std::filesystem::path procFolder = "/proc");
    ~ApplicationDirectory();
    ApplicationDirectory(const ApplicationDirectory&) = delete;
    ApplicationDirectory& operator=(const ApplicationDirectory&) = delete;

    /// The window's application: its desktop-file id without ".desktop", the same however it was started; the
    /// window's class in lower case when no entry fits. None when nothing at all is known.
    std::optional<std::string> identify(const DesktopWindow& window);
    /// Name of the window's application for people: the entry's, else that of the program or the window's
    /// class.
    std::optional<std::string> ownerName(const DesktopWindow& window);

    /// The desktop entry file of an application; none when it has none.
    std::optional<std::filesystem::path> entryPath(std::string_view identifier);

  private:
    struct Identity {
        std::optional<std::string> identifier;
        std::optional<std::string> name;
    };

    const Identity& identityOf(const DesktopWindow& window);
    Identity identifyAfresh(const DesktopWindow& window);
    const std::vector<DesktopEntry>& entries();
    std::optional<DesktopEntry> entry(std::string_view identifier);
    void forget();

    ProcessReader processes_;
    std::optional<std::vector<DesktopEntry>> entries_;
    std::map<std::string, Identity> identities_;
    GAppInfoMonitor* monitor_ = nullptr;
};

}  // namespace orvane
