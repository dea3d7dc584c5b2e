#pragma once

#include <memory>
#include <string>

#include "tests/desktops/test_desktop.h"
#include "tests/platform/x11/private_display.h"
#include "tests/platform/x11/test_windows.h"

namespace orvane {

/// Xvfb with openbox.
class X11Desktop : public TestDesktop {
  public:
    ~X11Desktop() override;

    void start() override;
    void activate(Window& window) override { user_->activate(window.number); }
    void showEmptyDesktop(bool show) override;
    void touch() override { display_->moveMouse(); }
    bool switchScreens(bool on) override;

  protected:
    void killCompositor() override;

  private:
    std::unique_ptr<PrivateDisplay> display_;
    std::unique_ptr<TestWindows> user_;
};

}  // namespace orvane
