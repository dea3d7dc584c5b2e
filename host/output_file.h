#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace orvane::host {

/// A file that is there in full or not at all: what is written goes to a temporary file beside it, which
/// takes the name at the end. Or standard output, which is written as it comes. Files get mode 0600.
class OutputFile {
  public:
    /// None for standard output. Without `overwrite` an existing file is a failure.
    OutputFile(std::optional<std::filesystem::path> file, bool overwrite);
    /// What was not finished is removed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Ignored once something failed.
    void write(std::string_view text);
    /// Brings everything to the disk and under the file's name. False when that or anything before failed.
    bool finish();
    /// What failed, for people; empty while all is well.
    const std::string& problem() const { return problem_; }

  private:
    void flush();
    bool takeName();
    void fail(const std::string& what);
    std::string shownName() const;

    std::optional<std::filesystem::path> file_;
    std::string temporary_;  ///< empty when there is none (any more)
    bool overwrite_;
    int descriptor_ = -1;
    std::string buffer_;
    std::string problem_;
};

}  // namespace orvane::host
