#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvane::host {

class Progress;

/// Why an input cannot be taken, for people, and where. Used between a reader's own functions only.
class InputProblem : public std::runtime_error {
  public:
    InputProblem(std::size_t line, const std::string& problem) : std::runtime_error(problem), line_(line) {}

    std::size_t line() const { return line_; }

  private:
    std::size_t line_;
};

/// A file that is read once from its beginning to its end, in pieces; lines are counted and progress is told
/// on the way. An interruption looks like the end of the file.
class InputFile {
  public:
    /// "-" is standard input. Failures show in `problem` and look like an empty file.
    InputFile(const std::filesystem::path& file, Progress& progress);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    static constexpr int end = -1;
    /// The next byte without taking it, or `end`.
    int peek() {
        if (place_ == buffer_.size() && !refill()) return end;
        return static_cast<unsigned char>(buffer_[place_]);
    }
    /// Takes the next byte; not at the end.
    void take() { line_ += buffer_[place_++] == '\n' ? 1 : 0; }
    /// Reads up to the end of the line, which is left out. False at the end of the file. Throws InputProblem
    /// for a line that is too long to be meant.
    bool readLine(std::string& line);
    /// Passes over a byte order mark, which some programs put before UTF-8.
    void skipByteOrderMark();

    /// Number of the line that the next byte belongs to, counted from 1.
    std::size_t line() const { return line_; }
    const std::string& problem() const { return problem_; }

    /// The longest line, or other single piece, that is taken.
    static constexpr std::size_t longestPiece = 4 << 20;

  private:
    bool refill();
    void fail(int code);

    std::string name_;
    Progress& progress_;
    int descriptor_ = -1;
    std::vector<char> buffer_;
    std::size_t place_ = 0;
    std::size_t line_ = 1;
    std::uint64_t done_ = 0;
    std::uint64_t size_ = 0;
    std::string problem_;
};

}  // namespace orvane::host
