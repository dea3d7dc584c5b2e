#include "tests/host/program.h"

#include <stdexcept>

namespace orvane::test {

namespace {

std::string textOf(GBytes* bytes) {
    gsize size = 0;
    const void* data = g_bytes_get_data(bytes, &size);
    std::string result(static_cast<const char*>(data), size);
    g_bytes_unref(bytes);
    return result;
}

GSubprocess* start(const char* program, const std::vector<std::string>& arguments) {
    std::vector<const char*> words{program};
    for (const std::string& argument : arguments) words.push_back(argument.c_str());
    words.push_back(nullptr);
    GSubprocess* process = g_subprocess_newv(
        words.data(),
        static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_PIPE | G_SUBPROCESS_FLAGS_STDERR_PIPE),
        nullptr);
    if (!process) throw std::runtime_error("the program does not start");
    return process;
}

}  // namespace

Program::Program(const std::vector<std::string>& arguments, const char* program)
    : process_(start(program, arguments), &g_object_unref) {}

ProgramRun Program::finish() {
    GBytes* output = nullptr;
    GBytes* errors = nullptr;
    if (!g_subprocess_communicate(process_.get(), nullptr, nullptr, &output, &errors, nullptr))
        throw std::runtime_error("the program does not end");
    ProgramRun run;
    run.output = textOf(output);
    run.errors = textOf(errors);
    if (g_subprocess_get_if_exited(process_.get())) run.status = g_subprocess_get_exit_status(process_.get());
    return run;
}

ProgramRun runProgram(const std::vector<std::string>& arguments) { return Program(arguments).finish(); }

ProgramRun runShell(const std::string& line, const std::string& argument) {
    return Program({"-c", line, ORVANE_PROGRAM, argument}, "/bin/sh").finish();
}

}  // namespace orvane::test
