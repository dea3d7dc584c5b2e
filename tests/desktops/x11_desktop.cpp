#include "tests/desktops/x11_desktop.h"

namespace orvane {

X11Desktop::~X11Desktop() { user_.reset(); }

void X11Desktop::start() {
    if (display_) {
        display_->startServer();
    } else {
        display_ = std::make_unique<PrivateDisplay>();
    }
    setVariable("DISPLAY", display_->name());
    setForPrograms("GDK_BACKEND", "x11");
    display_->startWindowManager();
    user_ = std::make_unique<TestWindows>(display_->name());
}

void X11Desktop::killCompositor() {
    user_.reset();
    display_->killServer();
}

void X11Desktop::showEmptyDesktop(bool show) { user_->switchDesktop(show ? 1 : 0); }

bool X11Desktop::switchScreens(bool on) {
    user_->runScreenSaver(!on);
    return true;
}

}  // namespace orvane
