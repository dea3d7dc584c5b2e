#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/log_sink.h"

namespace orvane::testing {

/// Root of this test program's own data, programs and processes; made before the first test and removed at
/// the end. XDG_DATA_HOME is "data" in it, XDG_DATA_DIRS "system" and PATH "bin".
const std::filesystem::path& fixtureRoot();

/// An empty folder of that name below the root.
std::filesystem::path freshFolder(const std::string& name);

void writeFile(const std::filesystem::path& file, std::string_view text);
std::string readFile(const std::filesystem::path& file);
/// Installs a desktop entry, with a program for it when `program` names one.
void installEntry(const std::string& identifier, const std::string& lines, const std::string& program = {});

/// Runs the default main context until the condition holds. False when nothing led to it for a very long
/// time.
bool runUntil(const std::function<bool()>& condition);

/// Keeps what is logged.
class LogLines : public LogSink {
  public:
    void log(std::string_view line) override { lines.emplace_back(line); }
    std::vector<std::string> lines;
};

/// A proc folder of our own.
struct FakeProcess {
    std::string executable;
    std::vector<std::string> command = {};
    int parent = 1;
    int processGroup = 0;
    bool hasTerminal = false;
    std::string unit = "session-1.scope";
    std::string flatpakInfo = {};
};
void addProcess(const std::filesystem::path& procFolder, int number, const FakeProcess& process);

}  // namespace orvane::testing
