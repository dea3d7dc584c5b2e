#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "host/exchange/import_batch.h"
#include "host/exchange/input_file.h"
#include "host/exchange/json_line.h"

namespace orvane::host {

/// Reads JSON Lines as `JsonLinesWriter` writes them; blank lines are passed over. Members that may be absent
/// may also be null; unknown ones and those that stand twice are refused.
class JsonLinesReader {
  public:
    /// Both must outlive the reader.
    JsonLinesReader(InputFile& input, ImportBatch& batch) : input_(input), batch_(batch) {}

    /// Throws InputProblem at the first line that is wrong.
    void read();

  private:
    /// Index by number.
    using Numbers = std::unordered_map<std::uint32_t, std::size_t>;

    void readHeader();
    void readLine();
    void readGroup();
    void readApplication();
    void readRecording();
    std::optional<std::string> takeText(std::string_view key);
    /// The index of what an earlier line gave this number.
    std::optional<std::size_t> takeReference(std::string_view key, const Numbers& known);
    void define(Numbers& known, std::optional<std::uint32_t> number, std::size_t index);

    InputFile& input_;
    ImportBatch& batch_;
    JsonLine line_;
    Numbers groups_;
    Numbers applications_;
    bool hasHeader_ = false;
};

}  // namespace orvane::host
