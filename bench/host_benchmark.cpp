#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "bench/benchmarks.h"

namespace orvane::bench {

namespace {

constexpr const char* name = "`orvane report today` as a whole process";

/// Runs a program to its end, its output thrown away.
void run(const std::filesystem::path& program, std::vector<std::string> arguments,
         std::vector<std::string> environment) {
    arguments.insert(arguments.begin(), program.string());
    const auto pointers = [](std::vector<std::string>& texts) {
        std::vector<char*> result;
        for (std::string& text : texts) result.push_back(text.data());
        result.push_back(nullptr);
        return result;
    };
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = 0;
    const int failure = posix_spawn(&process, program.c_str(), &actions, nullptr, pointers(arguments).data(),
                                    pointers(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (failure != 0 || waitpid(process, &status, 0) < 0 || status != 0)
        throw std::runtime_error(program.string() + " failed");
}

}  // namespace

void runHostBenchmark(Harness& harness, StoreFiles& files, const std::filesystem::path& host) {
    if (!harness.wants(name) || !std::filesystem::exists(host)) return;
    // A home whose store is the benchmark's.
    const std::filesystem::path home = files.workFolder() / "home";
    std::filesystem::remove_all(home);
    std::filesystem::create_directories(home);
    std::filesystem::create_directory_symlink(files.folderWith(harness.options().recordings),
                                              home / "Orvane");
    Samples samples;
    for (int i = 0; i < 21; ++i)
        samples.add(wallMicroseconds([&] {
            run(host, {"report", "today"},
                {"HOME=" + home.string(), "XDG_DATA_HOME=" + home.string(), "TZ=UTC"});
        }));
    harness.add({name, Unit::microseconds, std::nullopt, samples.median(), {.ours = 20'000}});
}

}  // namespace orvane::bench
