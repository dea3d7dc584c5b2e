#include "host/exchange/progress.h"

#include <unistd.h>

#include <iostream>

namespace orvane::host {

Progress::Progress() : last_(std::chrono::steady_clock::now()), isTerminal_(::isatty(STDERR_FILENO) == 1) {}

void Progress::clear() {
    if (shown_ && isTerminal_) std::cerr << "\r\033[K" << std::flush;
    shown_ = false;
}

void Progress::begin(std::string phase) { phase_ = std::move(phase); }

void Progress::show(std::uint64_t done, std::uint64_t total) {
    const auto now = std::chrono::steady_clock::now();
    if (now - last_ < std::chrono::seconds(1)) return;
    last_ = now;
    shown_ = true;
    std::string line = phase_ + "…";
    if (total > 0)
        line += " " + std::to_string(done * 100 / total) + " %";
    else if (done > 0)
        line += " " + std::to_string(done);
    std::cerr << (isTerminal_ ? "\r\033[K" : "") << line << (isTerminal_ ? "" : "\n") << std::flush;
}

}  // namespace orvane::host
