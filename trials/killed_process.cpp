#include "trials/killed_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace orvane::trials {

KilledProcess::KilledProcess(std::vector<std::string> command) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error(std::strerror(errno));
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::vector<char*> words;
    for (std::string& word : command) words.push_back(word.data());
    words.push_back(nullptr);
    const int failure = posix_spawn(&identifier_, words[0], &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    output_ = ends[0];
    if (failure == 0) return;
    close(output_);
    throw std::runtime_error(command[0] + ": " + std::strerror(failure));
}

KilledProcess::~KilledProcess() {
    kill();
    close(output_);
}

bool KilledProcess::readLine(std::string& line) {
    while (true) {
        if (const std::size_t end = read_.find('\n'); end != std::string::npos) {
            line = read_.substr(0, end);
            read_.erase(0, end + 1);
            return true;
        }
        std::array<char, 4096> bytes;
        const ssize_t count = read(output_, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        read_.append(bytes.data(), static_cast<std::size_t>(count));
    }
}

void KilledProcess::kill() {
    if (identifier_ <= 0) return;
    ::kill(identifier_, SIGKILL);
    while (waitpid(identifier_, nullptr, 0) < 0 && errno == EINTR) {
    }
    identifier_ = -1;
}

}  // namespace orvane::trials
