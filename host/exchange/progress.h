#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace orvane::host {

/// Tells on standard error how far long work is, once a second from its first second on: in one line that
/// changes on a terminal, in a line each time elsewhere.
class Progress {
  public:
    Progress();
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// What is being done from here on, such as "Reading".
    void begin(std::string phase);
    /// Call for every item; looks at the clock only now and then. A total of 0 is unknown.
    void advance(std::uint64_t done, std::uint64_t total) {
        if ((++calls_ & 0x3ff) == 0) show(done, total);
    }
    /// Shows the line now if it is time to.
    void show(std::uint64_t done, std::uint64_t total);
    /// Takes the line off the terminal, so that something else can be printed.
    void clear();

  private:
    std::string phase_;
    std::chrono::steady_clock::time_point last_;
    std::uint32_t calls_ = 0;
    bool isTerminal_;
    bool shown_ = false;
};

}  // namespace orvane::host
