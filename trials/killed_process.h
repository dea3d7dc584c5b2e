#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace orvane::trials {

/// A program whose output is read and that is killed. It ends with this object at the latest.
class KilledProcess {
  public:
    /// Throws std::runtime_error when it cannot be started. What it writes to standard error is dropped.
    explicit KilledProcess(std::vector<std::string> command);
    ~KilledProcess();
    KilledProcess(const KilledProcess&) = delete;
    KilledProcess& operator=(const KilledProcess&) = delete;

    /// One more line of its output. False when there will be none.
    bool readLine(std::string& line);
    /// Returns when it has ended; what it wrote before can still be read.
    void kill();

  private:
    pid_t identifier_ = -1;
    int output_ = -1;
    std::string read_;
};

}  // namespace orvane::trials
