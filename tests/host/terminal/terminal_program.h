#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

namespace orvane::test {

/// A program on a terminal of its own, which ends with this object.
class TerminalProgram {
  public:
    TerminalProgram(const std::vector<std::string>& command,
                    const std::map<std::string, std::string>& environment, unsigned short columns);
    ~TerminalProgram();
    TerminalProgram(const TerminalProgram&) = delete;
    TerminalProgram& operator=(const TerminalProgram&) = delete;

    /// Everything it has written, once the text is part of that or it has ended or 30 seconds are over.
    const std::string& readUntil(const std::string& text);
    const std::string& output() const { return output_; }
    /// As Ctrl+C does.
    void interrupt();
    /// Waits for its end; its exit status, or -1 when a signal ended it.
    int finish();

  private:
    pid_t process_ = -1;
    int terminal_ = -1;
    std::string output_;
};

}  // namespace orvane::test
