#include "tests/platform/x11/private_display.h"

#include <stdexcept>

namespace orvane {

PrivateDisplay::PrivateDisplay() { start({}); }

void PrivateDisplay::startServer() { start(name_); }

void PrivateDisplay::start(const std::string& display) {
    killServer();
    // Told a descriptor, the server writes its display number there once it is ready.
    std::vector<std::string> command{"Xvfb"};
    if (!display.empty()) command.push_back(display);
    for (const char* option :
         {"-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp", "-noreset"}) {
        command.emplace_back(option);
    }
    server_ = std::make_unique<ChildProcess>(command);
    const auto number = server_->readLine();
    if (number.empty()) throw std::runtime_error("Xvfb did not start");
    name_ = ":" + number;
}

void PrivateDisplay::startWindowManager() {
    // Windows that appear before it has run its start-up command are missed by it.
    windowManager_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"openbox", "--sm-disable", "--config-file",
                                 ORVANE_SOURCE_DIR "/tests/platform/x11/openbox.xml", "--startup",
                                 "echo ready"},
        std::map<std::string, std::string>{{"DISPLAY", name_}});
    if (windowManager_->readLine() != "ready") throw std::runtime_error("openbox did not start");
}

void PrivateDisplay::killServer() {
    windowManager_.reset();
    server_.reset();
}

void PrivateDisplay::moveMouse() {
    ChildProcess::run({"xdotool", "mousemove_relative", "3", "3"}, {{"DISPLAY", name_}});
}

}  // namespace orvane
