#include "host/exchange/csv_reader.h"

#include <algorithm>
#include <iterator>

#include "host/exchange/exchange_text.h"
#include "host/nearest.h"
#include "host/terminal.h"

namespace orvane::host {

namespace {

/// Places in `csvColumns`.
enum Column : std::size_t {
    startColumn,
    endColumn,
    idleColumn,
    windowColumn,
    applicationColumn,
    identifierColumn,
    nameColumn,
    colorColumn,
    disabledColumn,
    groupColumn,
    groupIdentifierColumn,
    groupNameColumn,
    groupCategoryColumn,
    groupColorColumn,
    groupDisabledColumn,
};

const std::optional<std::string> absent;

}  // namespace

void CsvReader::read() {
    input_.skipByteOrderMark();
    readHeading();
    while (table_.next(row_)) readRow();
}

void CsvReader::readHeading() {
    if (!table_.next(row_)) throw InputProblem(table_.line(), "the file is empty");
    width_ = row_.size();
    const std::vector<std::string> known(std::begin(csvColumns), std::end(csvColumns));
    for (std::size_t i = 0; i < width_; ++i) {
        const std::string name = row_[i].value_or("");
        const auto found = std::find(known.begin(), known.end(), name);
        if (found == known.end())
            throw InputProblem(table_.line(), "there is no column \"" + name + "\" in our exports." +
                                                  nearestHint(name, known));
        auto& place = places_[found - known.begin()];
        if (place) throw InputProblem(table_.line(), "the column \"" + name + "\" stands twice");
        place = i;
    }
    for (const Column required : {startColumn, endColumn})
        if (!places_[required])
            throw InputProblem(table_.line(),
                               std::string("the column \"") + csvColumns[required] + "\" is missing");
}

void CsvReader::readRow() {
    if (row_.size() != width_)
        throw InputProblem(table_.line(), "the row has " + std::to_string(row_.size()) +
                                              " fields and the heading " + std::to_string(width_));
    RecordingItem item;
    item.start = number(startColumn);
    item.end = number(endColumn);
    item.idle = flag(idleColumn);
    const Text window = text(windowColumn);
    item.window = window;
    item.application = application();
    batch_.addRecording(item);
}

std::optional<std::size_t> CsvReader::group() {
    return indexOf(groups_, groupColumn, groupDisabledColumn,
                   GroupItem{text(groupIdentifierColumn), text(groupNameColumn), text(groupCategoryColumn),
                             text(groupColorColumn), flag(groupDisabledColumn)},
                   [this](const GroupItem& item) { return batch_.addGroup(item); });
}

std::optional<std::size_t> CsvReader::application() {
    const std::optional<std::size_t> itsGroup = group();
    return indexOf(applications_, applicationColumn, groupDisabledColumn,
                   ApplicationItem{text(identifierColumn), text(nameColumn), text(colorColumn),
                                   flag(disabledColumn), itsGroup},
                   [this](const ApplicationItem& item) { return batch_.addApplication(item); });
}

template <class Item, class Add>
std::optional<std::size_t> CsvReader::indexOf(std::map<std::string, std::pair<std::size_t, Item>>& known,
                                              std::size_t numberColumn, std::size_t lastColumn, Item item,
                                              Add&& add) {
    const Text& number = field(numberColumn);
    const bool hasIdentifier = item.identifier && !item.identifier->empty();
    const std::string key = number          ? "#" + *number
                            : hasIdentifier ? "=" + *item.identifier
                                            : joined(numberColumn + 1, lastColumn);
    if (key.empty()) return std::nullopt;
    const auto found = known.find(key);
    if (found == known.end()) {
        const std::size_t index = add(item);
        known.emplace(key, std::pair(index, std::move(item)));
        return index;
    }
    if (number && found->second.second != item)
        fail(numberColumn, "has other attributes than in a row before");
    return found->second.first;
}

const CsvReader::Text& CsvReader::field(std::size_t column) const {
    return places_[column] ? row_[*places_[column]] : absent;
}

CsvReader::Text CsvReader::text(std::size_t column) const {
    const Text& written = field(column);
    if (!written) return std::nullopt;
    Text result = textFromExchange(*written);
    if (!result) fail(column, "promises base64, and no base64 follows");
    return result;
}

std::optional<bool> CsvReader::flag(std::size_t column) const {
    const Text& written = field(column);
    if (!written) return std::nullopt;
    if (*written != "true" && *written != "false") fail(column, "is neither true nor false");
    return *written == "true";
}

std::optional<double> CsvReader::number(std::size_t column) const {
    const Text& written = field(column);
    if (!written) return std::nullopt;
    const auto result = numberFromText(*written);
    if (!result) fail(column, "is not a number of seconds");
    return result;
}

void CsvReader::fail(std::size_t column, const std::string& problem) const {
    throw InputProblem(table_.line(), std::string(csvColumns[column]) + " \"" +
                                          displayText(field(column).value_or(""), 40) + "\" " + problem);
}

std::string CsvReader::joined(std::size_t first, std::size_t last) const {
    std::string result;
    bool isAbsent = true;
    for (std::size_t column = first; column <= last; ++column) {
        const Text& text = field(column);
        isAbsent &= !text;
        result += text ? std::to_string(text->size()) + ":" + *text : "-";
    }
    return isAbsent ? std::string() : result;
}

}  // namespace orvane::host
