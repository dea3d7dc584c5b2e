#pragma once

#include <string>
#include <vector>

#include "host/exchange/exchange_writer.h"
#include "host/output_file.h"

namespace orvane::host {

/// Names of the columns, in the order in which they are written.
inline constexpr const char* csvColumns[] = {
    "start",          "end",         "idle",          "window", "application",      "identifier",
    "name",           "color",       "disabled",      "group",  "group_identifier", "group_name",
    "group_category", "group_color", "group_disabled"};

/// Writes comma-separated values (RFC 4180), a row for each recording: see docs/export-format.md.
class CsvWriter : public ExchangeWriter {
  public:
    /// The file must outlive the writer; its failures show there.
    explicit CsvWriter(OutputFile& output) : output_(output) {}

    void begin() override;
    void group(const GroupItem& group) override;
    void application(const ApplicationItem& application) override;
    void recording(const RecordingItem& recording) override;

  private:
    OutputFile& output_;
    std::vector<std::string> groups_;        ///< the columns of each group
    std::vector<std::string> applications_;  ///< the columns of each application and its group
};

}  // namespace orvane::host
