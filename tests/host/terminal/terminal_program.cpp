#include "tests/host/terminal/terminal_program.h"

#include <poll.h>
#include <pty.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace orvane::test {

TerminalProgram::TerminalProgram(const std::vector<std::string>& command,
                                 const std::map<std::string, std::string>& environment,
                                 unsigned short columns) {
    std::vector<char*> arguments;
    for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    winsize size{};
    size.ws_row = 24;
    size.ws_col = columns;
    process_ = ::forkpty(&terminal_, nullptr, nullptr, &size);
    if (process_ < 0) throw std::runtime_error("there is no terminal to be had");
    if (process_ == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        for (const auto& [name, value] : environment) ::setenv(name.c_str(), value.c_str(), 1);
        ::execv(arguments.front(), arguments.data());
        ::_exit(127);
    }
}

TerminalProgram::~TerminalProgram() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
    ::close(terminal_);
}

const std::string& TerminalProgram::readUntil(const std::string& text) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    std::array<char, 4096> bytes;
    while (output_.find(text) == std::string::npos && std::chrono::steady_clock::now() < deadline) {
        pollfd readable{terminal_, POLLIN, 0};
        if (::poll(&readable, 1, 100) <= 0) continue;
        const ssize_t count = ::read(terminal_, bytes.data(), bytes.size());
        // The terminal of a program that has ended cannot be read.
        if (count <= 0) break;
        output_.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return output_;
}

void TerminalProgram::interrupt() {
    const char controlC = 3;
    if (::write(terminal_, &controlC, 1) != 1) throw std::runtime_error("the terminal takes no input");
}

int TerminalProgram::finish() {
    readUntil("\001 which no program writes");
    int status = 0;
    ::waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace orvane::test
