#pragma once

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

  private:
    void tell(const std::string& command);

    std::string socket_;
    std::unique_ptr<ChildProcess> sway_;
};

}  // namespace orvane
