#pragma once

#include <cstddef>

#include "host/exchange/exchange_writer.h"
#include "host/output_file.h"

namespace orvane::host {

/// Version of both formats of our own, JSON Lines and CSV.
inline constexpr int exchangeVersion = 1;

/// Writes JSON Lines: see docs/export-format.md.
class JsonLinesWriter : public ExchangeWriter {
  public:
    /// The file must outlive the writer; its failures show there.
    explicit JsonLinesWriter(OutputFile& output) : output_(output) {}

    void begin() override;
    void group(const GroupItem& group) override;
    void application(const ApplicationItem& application) override;
    void recording(const RecordingItem& recording) override;

  private:
    OutputFile& output_;
    std::size_t groups_ = 0;
    std::size_t applications_ = 0;
};

}  // namespace orvane::host
