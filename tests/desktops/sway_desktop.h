#pragma once

#include <unistd.h>

#include <memory>
#include <string>

#include "tests/desktops/test_desktop.h"

namespace orvane {

/// Sway without a screen, and without the X server that it could start.
class SwayDesktop : public TestDesktop {
  public:
    ~SwayDesktop() override;

    void start() override;
    void activate(Window& window) override;
    /// Windows put aside are what comes closest.
    void minimize(Window& window) override;
    void showEmptyDesktop(bool show) override;
    void touch() override;

  protected:
    void killCompositor() override { sway_.reset(); }

    const std::string& socket() const { return socket_; }
    void setSocket(const std::string& socket) { socket_ = socket; }

  private:
    void tell(const std::string& command);

    std::string socket_;
    std::unique_ptr<ChildProcess> sway_;
};

/// Sway as any other compositor of its family: its own socket cannot be found.
class ToplevelDesktop : public SwayDesktop {
  public:
    void start() override;
    bool tellsVisibility() const override { return false; }
    /// Those of another user are not looked for.
    bool tellsProcesses() const override { return geteuid() != 0; }
};

}  // namespace orvane
