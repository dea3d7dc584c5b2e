#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/exchange/input_file.h"

namespace orvane::host {

/// Reads comma-separated values (RFC 4180; a line may also end with a line feed alone). A field without
/// quotation marks that is empty is absent.
class CsvTable {
  public:
    using Row = std::vector<std::optional<std::string>>;

    /// The file must outlive the table.
    explicit CsvTable(InputFile& input) : input_(input) {}

    /// Reads the next row that is not blank. False at the end. Throws InputProblem for quotation marks that
    /// do not match, for text that is not UTF-8 and for fields that are too long to be meant.
    bool next(Row& row);

    /// The line that the row read last begins on.
    std::size_t line() const { return line_; }

  private:
    std::optional<std::string> field();
    std::string quotedField();
    void append(std::string& field);
    bool atFieldEnd();
    /// Takes the end of a line. False when something else follows.
    bool takeLineEnd();

    InputFile& input_;
    std::size_t line_ = 1;
};

}  // namespace orvane::host
