#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "host/exchange/import_batch.h"
#include "host/exchange/input_file.h"
#include "host/replay/trace_json.h"

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
    void readHeader(ObjectReader& line);
    void readLine(ObjectReader& line);
    void readGroup(ObjectReader& line);
    void readApplication(ObjectReader& line);
    void readRecording(ObjectReader& line);

    InputFile& input_;
    ImportBatch& batch_;
    std::unordered_map<std::int64_t, std::size_t> groups_;  ///< index by number
    std::unordered_map<std::int64_t, std::size_t> applications_;
    bool hasHeader_ = false;
};

}  // namespace orvane::host
