#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdlib>
#include <iostream>

#include "trials/soak.h"

namespace {

using orvane::trials::Soak;

/// A folder in memory when there is one: what is tried is the library, not the disk.
std::filesystem::path makeFolder() {
    const std::filesystem::path inMemory = "/dev/shm";
    std::string name =
        ((::access(inMemory.c_str(), W_OK) == 0 ? inMemory : std::filesystem::temp_directory_path()) /
         "orvane-soak-XXXXXX")
            .string();
    if (!::mkdtemp(name.data())) throw std::system_error(errno, std::generic_category(), name);
    return name;
}

std::string kibibytes(std::int64_t bytes) { return std::to_string(bytes / 1024) + " KiB"; }

int run(std::uint64_t days, std::uint64_t seed, const std::filesystem::path& folder) {
    const auto start = std::chrono::steady_clock::now();
    Soak soak(folder, seed);
    const bool isTerminal = ::isatty(STDERR_FILENO) != 0;
    auto last = start;
    while (soak.use().days() < days && soak.day()) {
        const auto now = std::chrono::steady_clock::now();
        if (now - last < std::chrono::seconds(1)) continue;
        last = now;
        std::cerr << (isTerminal ? "\r" : "") << "day " << soak.use().days() << " of " << days << ", "
                  << soak.use().polls() << " polls" << (isTerminal ? "   " : "\n") << std::flush;
    }
    if (isTerminal) std::cerr << "\r\033[K";
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    std::cout << soak.use().days() << " days, " << soak.use().polls() << " polls and " << soak.use().reports()
              << " reports in " << static_cast<long>(took.count()) << " s; "
              << soak.use().comparedSeconds() / 3600 << " hours of use compared\n"
              << "memory after the first week " << kibibytes(soak.afterFirstWeek().memory) << ", at the end "
              << kibibytes(soak.now().memory) << "; SQLite's "
              << kibibytes(soak.afterFirstWeek().sqliteMemory) << ", " << kibibytes(soak.now().sqliteMemory)
              << "; open files " << soak.afterFirstWeek().openFiles << ", " << soak.now().openFiles << '\n';
    if (soak.problem()) {
        std::cout << "FAILED: " << *soak.problem() << " (--seed " << seed << ")\n";
        return 1;
    }
    std::cout << "every total was right, and nothing grew\n";
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app(
        "Tracks a simulated year in one process, with edits and reports, and compares every total with a "
        "sum of its own.\nMemory and open files must not grow after the first week.");
    std::uint64_t days = 365;
    std::uint64_t seed = 1;
    app.add_option("--days", days, "Days to simulate, at least 8")->check(CLI::Range(8, 36500));
    app.add_option("--seed", seed, "Another seed is another year");
    CLI11_PARSE(app, argc, argv);
    const std::filesystem::path folder = makeFolder();
    const int result = run(days, seed, folder);
    std::filesystem::remove_all(folder);
    return result;
}
