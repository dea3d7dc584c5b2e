#pragma once

#include <gio/gio.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace orvane::test {

/// What a run of the program came to.
struct ProgramRun {
    int status = -1;  ///< -1 when a signal ended it
    std::string output;
    std::string errors;

    nlohmann::json json() const { return nlohmann::json::parse(output); }
};

/// The program while it runs; it reads nothing from standard input.
class Program {
  public:
    explicit Program(const std::vector<std::string>& arguments, const char* program = ORVANE_PROGRAM);

    void signal(int number) { g_subprocess_send_signal(process_.get(), number); }
    /// Waits for its end.
    ProgramRun finish();

  private:
    std::unique_ptr<GSubprocess, decltype(&g_object_unref)> process_;
};

/// Runs the program to its end.
ProgramRun runProgram(const std::vector<std::string>& arguments);
/// Runs a line of shell to its end; "$0" is the program, "$1" the argument.
ProgramRun runShell(const std::string& line, const std::string& argument);

}  // namespace orvane::test
