#pragma once

#include <memory>
#include <vector>

#include "platform/accessibility.h"
#include "platform/clock.h"
#include "platform/desktop_health.h"
#include "platform/file_manager.h"
#include "platform/host_application.h"
#include "platform/log_sink.h"
#include "platform/run_loop.h"
#include "platform/user_defaults.h"
#include "platform/uuid_source.h"
#include "platform/value_transformers.h"
#include "platform/window_server.h"
#include "platform/workspace.h"

namespace orvane {

/// Everything the library asks of the desktop and of its host. A host may install one before it first asks
/// for the shared tracker; otherwise the running Linux desktop is used.
class ORVANE_EXPORT Platform {
  public:
    virtual ~Platform() = default;

    virtual Workspace& workspace() = 0;
    virtual WindowServer& windowServer() = 0;
    virtual Accessibility& accessibility() = 0;
    virtual HostApplication& hostApplication() = 0;
    virtual FileManager& fileManager() = 0;
    virtual UserDefaults& userDefaults() = 0;
    virtual RunLoop& runLoop() = 0;
    virtual Clock& clock() = 0;
    virtual LogSink& logSink() = 0;
    virtual UuidSource& uuidSource() = 0;

    /// How well each service of the desktop works right now. Services that were asked for the first time may
    /// need a moment before they answer; DesktopHealthDidChangeNotification tells when something has changed.
    /// Empty for a platform that is no desktop.
    virtual std::vector<ServiceHealth> desktopHealth() { return {}; }

    /// Posts the host application's own notices.
    NotificationCenter& defaultNotificationCenter() { return defaultNotificationCenter_; }
    ValueTransformers& valueTransformers() { return valueTransformers_; }

    /// The installed platform; the running Linux desktop when none was installed, made on first use.
    static Platform& current();
    /// Installs a platform for the whole process, or (none) goes back to the default. Nothing that belongs to
    /// the one before may be in use any more.
    static void install(std::shared_ptr<Platform> platform);

  private:
    NotificationCenter defaultNotificationCenter_;
    ValueTransformers valueTransformers_;
};

/// The running Linux desktop.
ORVANE_EXPORT std::shared_ptr<Platform> makeLinuxPlatform();

}  // namespace orvane
