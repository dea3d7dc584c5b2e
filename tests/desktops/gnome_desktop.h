#pragma once

#include <gio/gio.h>

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "tests/desktops/test_desktop.h"
#include "tests/platform/accessibility/private_accessibility.h"

namespace orvane {

/// GNOME Shell without a screen, which lets the test run scripts inside it.
class GnomeDesktop : public TestDesktop {
  public:
    /// With our extension of the shell, unless the test wants to do without or to install it itself.
    explicit GnomeDesktop(bool hasExtension = true);
    ~GnomeDesktop() override;

    void start() override;
    void activate(Window& window) override;
    void showEmptyDesktop(bool show) override;
    void touch() override;
    bool switchScreens(bool on) override;

    /// Runs JavaScript in the shell; what it yields as JSON.
    std::string evaluate(const std::string& script);
    /// The version of the shell that is installed, such as "43.9"; empty without one.
    static std::string installedVersion();
    /// Programs offer themselves to assistive programs from now on, on the bus that is returned.
    std::unique_ptr<PrivateAccessibility> offerAccessibility();
    /// After a program that the test ran has written them.
    void giveSettingsToUser() { giveToUser(folder() / "home"); }
    /// What the user's programs have in their environment, for programs that the test runs.
    std::map<std::string, std::string> userEnvironment() const;

  protected:
    void killCompositor() override;

  private:
    std::optional<std::string> tryToEvaluate(const std::string& script);

    const bool hasExtension_;
    GDBusConnection* connection_;
    std::unique_ptr<ChildProcess> shell_;
};

}  // namespace orvane
