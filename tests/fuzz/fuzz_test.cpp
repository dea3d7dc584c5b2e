// A short run of every fuzz target: what it is to begin with, and changes to that, the same in every run.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string_view>

#include "tests/fuzz/mutator.h"

// Each target of the build, under the name that its entry has there.
#define FUZZ_TARGET(name) extern "C" int fuzz_##name(const std::uint8_t* data, std::size_t size);
#include "fuzz/targets.inc"
#undef FUZZ_TARGET

namespace orvane::test {
namespace {

struct Target {
    const char* name;
    int (*run)(const std::uint8_t* data, std::size_t size);
};

constexpr Target targets[] = {
#define FUZZ_TARGET(name) {#name, fuzz_##name},
#include "fuzz/targets.inc"
#undef FUZZ_TARGET
};

/// How many changed inputs are run. Those of databases are slow.
std::size_t mutationsOf(const Target& target) {
    return std::string_view(target.name) == "database" ? 300 : 2500;
}

std::vector<std::string> corpusOf(const std::string& name) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(ORVANE_SOURCE_DIR) / "fuzz/corpus" / name))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    std::vector<std::string> corpus;
    for (const auto& file : files) {
        std::ifstream stream(file, std::ios::binary);
        corpus.emplace_back(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    }
    return corpus;
}

/// What is being run, for the handler below.
std::string input;
std::string inputFile;

/// Keeps the input that ends the process.
void keepInput(int signal) {
    const int file = ::open(inputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file >= 0 && ::write(file, input.data(), input.size()) == static_cast<ssize_t>(input.size())) {
        constexpr std::string_view told = "the input is kept in ";
        static_cast<void>(::write(STDERR_FILENO, told.data(), told.size()) +
                          ::write(STDERR_FILENO, inputFile.data(), inputFile.size()) +
                          ::write(STDERR_FILENO, "\n", 1));
    }
    ::raise(signal);
}

void run(const Target& target, std::string bytes) {
    input = std::move(bytes);
    // A block of just its size, so that a sanitizer sees what is read beyond it.
    const std::vector<std::uint8_t> exact(input.begin(), input.end());
    target.run(exact.data(), exact.size());
}

class Fuzz : public testing::TestWithParam<Target> {};

TEST_P(Fuzz, Short) {
    const Target& target = GetParam();
    const std::vector<std::string> corpus = corpusOf(target.name);
    ASSERT_FALSE(corpus.empty());
    inputFile = std::string(ORVANE_BINARY_DIR) + "/crash-" + target.name;
    struct sigaction keep {};
    keep.sa_handler = keepInput;
    keep.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL}) ::sigaction(signal, &keep, nullptr);
    for (const std::string& seed : corpus) run(target, seed);
    constexpr std::uint32_t seed = 20260302;
    Mutator mutator(corpus, seed);
    for (std::size_t i = 0; i < mutationsOf(target); ++i) run(target, mutator.next());
    std::cout << "fuzzed " << corpus.size() + mutationsOf(target) << " inputs (" << target.name << ")\n";
}

INSTANTIATE_TEST_SUITE_P(All, Fuzz, testing::ValuesIn(targets),
                         [](const auto& target) { return std::string(target.param.name); });

}  // namespace
}  // namespace orvane::test
