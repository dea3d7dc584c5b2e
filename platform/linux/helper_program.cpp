#include "platform/linux/helper_program.h"

#include <glib.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "platform/library_resource.h"

namespace orvane {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

bool isProgram(const fs::path& path) { return access(path.c_str(), X_OK) == 0; }

/// Reads to the end of the pipe; false when that takes too long or is too much.
bool readAll(int descriptor, std::vector<std::uint8_t>& output, std::size_t most,
             Clock::time_point deadline) {
    while (true) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd waiting{descriptor, POLLIN, 0};
        const int ready = left.count() > 0 ? ::poll(&waiting, 1, static_cast<int>(left.count())) : 0;
        if (ready < 0 && errno == EINTR) continue;
        if (ready <= 0) return false;
        std::uint8_t buffer[4096];
        const ssize_t size = ::read(descriptor, buffer, sizeof buffer);
        if (size < 0 && errno == EINTR) continue;
        if (size <= 0) return size == 0;
        output.insert(output.end(), buffer, buffer + size);
        if (output.size() > most) return false;
    }
}

}  // namespace

std::optional<fs::path> helperProgram(const std::string& name) {
    // An installed library lies in `lib` or in a folder below it, an installed program in `bin`. No other
    // place is believed: beside a library in a folder for everybody, such a program could be anybody's.
    fs::path folder = libraryFile().parent_path();
    if (folder.parent_path().filename() == "lib") folder = folder.parent_path();
    if (const fs::path kind = folder.filename(); kind == "lib" || kind == "lib64" || kind == "bin") {
        fs::path program = folder.parent_path() / "libexec" / "orvane" / name;
        if (isProgram(program)) return program;
    }
    fs::path built = fs::path(ORVANE_HELPER_DIR) / name;
    if (isProgram(built)) return built;
    return std::nullopt;
}

std::optional<std::vector<std::uint8_t>> outputOfProgram(const std::vector<std::string>& command,
                                                         std::size_t most,
                                                         std::chrono::milliseconds longest) {
    const Clock::time_point deadline = Clock::now() + longest;
    std::vector<char*> arguments;
    for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    GPid child = 0;
    int output = -1;
    // The process is waited for here, so that none is left behind whatever the host does with its children.
    constexpr auto flags = static_cast<GSpawnFlags>(G_SPAWN_DO_NOT_REAP_CHILD | G_SPAWN_STDERR_TO_DEV_NULL);
    if (!g_spawn_async_with_pipes(nullptr, arguments.data(), nullptr, flags, nullptr, nullptr, &child,
                                  nullptr, &output, nullptr, nullptr))
        return std::nullopt;
    std::vector<std::uint8_t> result;
    const bool complete = readAll(output, result, most, deadline);
    ::close(output);
    if (!complete) ::kill(child, SIGKILL);
    while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    g_spawn_close_pid(child);
    return complete ? std::optional(std::move(result)) : std::nullopt;
}

}  // namespace orvane
