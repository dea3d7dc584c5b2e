#pragma once

#include <memory>
#include <set>
#include <string>

#include "platform/linux/session/bus_connection.h"
#include "tests/desktops/test_desktop.h"

namespace orvane {

/// KWin without a screen, as the user who runs the test.
class KwinDesktop : public TestDesktop {
  public:
    /// KWin tells windows by its protocol only to programs that have the permission.
    explicit KwinDesktop(bool hasPermission);
    ~KwinDesktop() override;

    void start() override;
    void activate(Window& window) override;
    void showEmptyDesktop(bool show) override;
    void touch() override;

    /// How many scripts of ours KWin runs for programs that are, or were, on the bus.
    int ownScripts();
    /// Loads our script for a connection that is closed at once, as when a program crashes.
    void leaveScriptBehind();

  protected:
    void killCompositor() override { kwin_.reset(); }

  private:
    /// Runs the script in KWin under that name, or another one.
    void run(const std::string& script, std::string name = {});
    /// The answer, or null.
    Variant ask(const char* path, const char* interface, const char* method, GVariant* arguments);

    GDBusConnection* connection_;
    int scripts_ = 0;
    /// What scripts of ours would be called, of all connections that were ever seen.
    std::set<std::string> ownNames_;
    std::unique_ptr<ChildProcess> kwin_;
};

}  // namespace orvane
