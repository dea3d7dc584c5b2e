#pragma once

#include <gio/gio.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

/// A program that runs beside the test and ends with it, whichever way the test ends. What it says of errors
/// is shown when $ORVANE_TEST_OUTPUT is set.
class ChildProcess {
  public:
    explicit ChildProcess(const std::vector<std::string>& command,
                          const std::map<std::string, std::string>& environment = {}) {
        GSubprocessLauncher* launcher = g_subprocess_launcher_new(static_cast<GSubprocessFlags>(
            G_SUBPROCESS_FLAGS_STDOUT_PIPE | G_SUBPROCESS_FLAGS_STDIN_PIPE |
            (std::getenv("ORVANE_TEST_OUTPUT") != nullptr ? 0 : G_SUBPROCESS_FLAGS_STDERR_SILENCE)));
        for (const auto& [name, value] : environment) {
            g_subprocess_launcher_setenv(launcher, name.c_str(), value.c_str(), TRUE);
        }
        g_subprocess_launcher_set_child_setup(
            launcher, [](gpointer) { prctl(PR_SET_PDEATHSIG, SIGKILL); }, nullptr, nullptr);
        std::vector<const char*> arguments;
        for (const auto& argument : command) arguments.push_back(argument.c_str());
        arguments.push_back(nullptr);
        GError* error = nullptr;
        process_ = g_subprocess_launcher_spawnv(launcher, arguments.data(), &error);
        g_object_unref(launcher);
        if (process_ == nullptr) throw std::runtime_error(error->message);
        const char* identifier = g_subprocess_get_identifier(process_);
        identifier_ = identifier != nullptr ? std::atoi(identifier) : 0;
    }
    ~ChildProcess() {
        kill();
        g_object_unref(process_);
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    int identifier() const { return identifier_; }
    /// One line of what it prints; blocks until it is there. Empty at the end of the output.
    std::string readLine() {
        std::string line;
        char byte = 0;
        while (g_input_stream_read(g_subprocess_get_stdout_pipe(process_), &byte, 1, nullptr, nullptr) == 1) {
            if (byte == '\n') break;
            line += byte;
        }
        return line;
    }
    /// Gives it a line of input.
    void writeLine(const std::string& line) {
        GOutputStream* input = g_subprocess_get_stdin_pipe(process_);
        const std::string bytes = line + '\n';
        g_output_stream_write_all(input, bytes.data(), bytes.size(), nullptr, nullptr, nullptr);
        g_output_stream_flush(input, nullptr, nullptr);
    }
    /// Returns when it stands still.
    void stop() {
        ::kill(identifier_, SIGSTOP);
        siginfo_t ignored;
        waitid(P_PID, static_cast<id_t>(identifier_), &ignored, WSTOPPED | WNOWAIT);
    }
    void resume() { ::kill(identifier_, SIGCONT); }
    /// Returns when it has ended.
    void kill() {
        g_subprocess_force_exit(process_);
        g_subprocess_wait(process_, nullptr, nullptr);
    }
    /// Runs a program to its end; whether it succeeded.
    static bool run(const std::vector<std::string>& command,
                    const std::map<std::string, std::string>& environment = {}) {
        ChildProcess process(command, environment);
        return g_subprocess_wait_check(process.process_, nullptr, nullptr) != 0;
    }

  private:
    GSubprocess* process_ = nullptr;
    int identifier_ = 0;
};

}  // namespace orvane
