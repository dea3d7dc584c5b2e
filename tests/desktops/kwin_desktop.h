#pragma once

#include <memory>
#include <string>

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

  protected:
    void killCompositor() override { kwin_.reset(); }

  private:
    /// Runs the script in KWin.
    void run(const std::string& script);
    bool call(const char* path, const char* interface, const char* method, GVariant* arguments);

    GDBusConnection* connection_;
    int scripts_ = 0;
    std::unique_ptr<ChildProcess> kwin_;
};

}  // namespace orvane
