#pragma once

#include <memory>
#include <string>

#include "tests/platform/child_process.h"

namespace orvane {

/// An X server of the test's own, without a screen, and a window manager in it.
class PrivateDisplay {
  public:
    /// On a display number that was free.
    PrivateDisplay();

    /// Such as ":7".
    const std::string& name() const { return name_; }
    /// Ends what ran before.
    void startServer();
    void startWindowManager();
    void killServer();
    void killWindowManager() { windowManager_.reset(); }
    ChildProcess& server() { return *server_; }

    /// Moves the pointer, as a user's input.
    void moveMouse();

  private:
    void start(const std::string& display);

    std::string name_;
    std::unique_ptr<ChildProcess> server_;
    std::unique_ptr<ChildProcess> windowManager_;
};

}  // namespace orvane
