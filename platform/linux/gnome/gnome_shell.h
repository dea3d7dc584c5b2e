#pragma once

#include <gio/gio.h>

#include <optional>
#include <string>
#include <vector>

#include "foundation/internal.h"

namespace orvane {

/// What concerns extensions in the GNOME Shell that runs on the session bus, and in its settings. Calls wait
/// for the answer, some seconds at the most: for commands, not for trackers.
class GnomeShell {
  public:
    /// States of an extension, as the shell numbers them.
    enum class ExtensionState { running = 1, off = 2, failed = 3, tooOld = 4 };

    /// Connects to the session bus; `version` is none when no shell answers there.
    GnomeShell();
    ~GnomeShell();
    GnomeShell(const GnomeShell&) = delete;
    GnomeShell& operator=(const GnomeShell&) = delete;

    /// Such as "43.9".
    const std::optional<std::string>& version() const { return version_; }
    /// None when the shell does not know the extension, as before it has started anew.
    std::optional<ExtensionState> state(const std::string& extension);
    /// What the shell says of an extension that failed.
    std::string failure(const std::string& extension);

    /// Asks the shell to switch the extension on or off; false when it does not know it.
    bool switchExtension(const std::string& extension, bool on);
    /// Enters the extension into the settings that the shell reads at its start, or takes it out. Changed is
    /// set when it stood there otherwise. Returns why it could not be done, as a clause; empty when it is.
    std::string setInSettings(const std::string& extension, bool on, bool& changed);
    /// The user has switched all extensions off.
    bool areExtensionsOff() const;

  private:
    GVariant* call(const char* interface, const char* method, GVariant* arguments);
    GVariant* information(const std::string& extension);

    GDBusConnection* connection_ = nullptr;
    GSettings* settings_ = nullptr;
    std::optional<std::string> version_;
};

}  // namespace orvane
