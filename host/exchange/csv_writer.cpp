#include "host/exchange/csv_writer.h"

#include <iterator>

#include "host/exchange/exchange_text.h"

namespace orvane::host {

namespace {

/// Absent is an empty field without quotation marks, an empty text one with them.
template <class Text>
std::string field(const std::optional<Text>& text) {
    if (!text) return {};
    std::string written = exchangeText(*text);
    if (!written.empty() && written.find_first_of(",\"\r\n") == std::string::npos) return written;
    std::string result = "\"";
    for (const char character : written) {
        if (character == '"') result += '"';
        result += character;
    }
    return result + '"';
}

std::string field(const std::optional<bool>& flag) {
    if (!flag) return {};
    return *flag ? "true" : "false";
}

std::string field(const std::optional<double>& number) { return number ? numberText(*number) : ""; }

}  // namespace

void CsvWriter::begin() {
    std::string line;
    for (const char* column : csvColumns) line += std::string(line.empty() ? "" : ",") + column;
    output_.write(line + "\r\n");
}

void CsvWriter::group(const GroupItem& group) {
    groups_.push_back(std::to_string(groups_.size() + 1) + "," + field(group.identifier) + "," +
                      field(group.name) + "," + field(group.category) + "," + field(group.color) + "," +
                      field(group.disabled));
}

void CsvWriter::application(const ApplicationItem& application) {
    applications_.push_back(std::to_string(applications_.size() + 1) + "," + field(application.identifier) +
                            "," + field(application.name) + "," + field(application.color) + "," +
                            field(application.disabled) + "," +
                            (application.group ? groups_[*application.group] : ",,,,,"));
}

void CsvWriter::recording(const RecordingItem& recording) {
    output_.write(field(recording.start) + "," + field(recording.end) + "," + field(recording.idle) + "," +
                  field(recording.window) + "," +
                  (recording.application ? applications_[*recording.application] : ",,,,,,,,,,") + "\r\n");
}

}  // namespace orvane::host
