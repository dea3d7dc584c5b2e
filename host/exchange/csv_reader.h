#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "host/exchange/csv_table.h"
#include "host/exchange/csv_writer.h"
#include "host/exchange/import_batch.h"

namespace orvane::host {

/// Reads the CSV that `CsvWriter` writes. The columns may stand in any order, and all but "start" and "end"
/// may be missing.
class CsvReader {
  public:
    /// Both must outlive the reader.
    CsvReader(InputFile& input, ImportBatch& batch) : input_(input), table_(input), batch_(batch) {}

    /// Throws InputProblem at the first row that is wrong.
    void read();

  private:
    using Text = std::optional<std::string>;

    void readHeading();
    void readRow();
    std::optional<std::size_t> group();
    std::optional<std::size_t> application();
    /// The index of the item that the row's number names; without a number, of the one with the same
    /// identifier, or, without that, with the same fields. None when all its fields are absent.
    template <class Item, class Add>
    std::optional<std::size_t> indexOf(std::map<std::string, std::pair<std::size_t, Item>>& known,
                                       std::size_t numberColumn, std::size_t lastColumn, Item item,
                                       Add&& add);

    /// The row's field in the column; absent when the file lacks the column.
    const Text& field(std::size_t column) const;
    Text text(std::size_t column) const;
    std::optional<bool> flag(std::size_t column) const;
    std::optional<double> number(std::size_t column) const;
    [[noreturn]] void fail(std::size_t column, const std::string& problem) const;
    /// The fields of some columns as one text that no other fields have; empty when all are absent.
    std::string joined(std::size_t first, std::size_t last) const;

    InputFile& input_;
    CsvTable table_;
    ImportBatch& batch_;
    CsvTable::Row row_;
    std::size_t width_ = 0;
    std::optional<std::size_t> places_[std::size(csvColumns)];
    std::map<std::string, std::pair<std::size_t, GroupItem>> groups_;
    std::map<std::string, std::pair<std::size_t, ApplicationItem>> applications_;
};

}  // namespace orvane::host
