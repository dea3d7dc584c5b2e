#include "tests/desktops/sway_desktop.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

#include "tests/platform/main_loop_wait.h"

namespace orvane {

SwayDesktop::~SwayDesktop() = default;

void SwayDesktop::start() {
    const auto config = folder() / "sway-config";
    // Its own name and socket are known to what it starts.
    std::ofstream(config) << "xwayland disable\n"
                             "output HEADLESS-1 mode 1280x800\n"
                             "exec echo $WAYLAND_DISPLAY $SWAYSOCK\n";
    auto variables = environment();
    variables["WLR_BACKENDS"] = "headless";
    variables["WLR_RENDERER"] = "pixman";
    variables["WLR_LIBINPUT_NO_DEVICES"] = "1";
    // Else it would take itself for a window of the sway that was there before.
    variables["WAYLAND_DISPLAY"] = "";
    sway_ = std::make_unique<ChildProcess>(asUser({"sway", "-c", config.string()}), variables);
    std::string display;
    std::istringstream(sway_->readLine()) >> display >> socket_;
    if (socket_.empty()) throw std::runtime_error("sway did not start");
    setVariable("WAYLAND_DISPLAY", display);
    setForPrograms("GDK_BACKEND", "wayland");
}

void SwayDesktop::tell(const std::string& command) {
    // A program takes its window for shown a moment before sway knows it.
    if (!waitUntil([&] { return ChildProcess::run({"swaymsg", "-s", socket_, "--", command}); })) {
        throw std::runtime_error("swaymsg " + command);
    }
}

void SwayDesktop::activate(Window& window) {
    tell("[pid=" + std::to_string(window.program->identifier()) + "] focus");
}

void SwayDesktop::minimize(Window& window) {
    tell("[pid=" + std::to_string(window.program->identifier()) + "] move scratchpad");
}

void SwayDesktop::showEmptyDesktop(bool show) { tell(show ? "workspace empty" : "workspace back_and_forth"); }

void ToplevelDesktop::start() {
    SwayDesktop::start();
    const auto hidden = folder() / "sway-ipc";
    std::filesystem::rename(socket(), hidden);
    setSocket(hidden.string());
}

void SwayDesktop::touch() { tell("seat seat0 cursor move 5 5"); }

}  // namespace orvane
