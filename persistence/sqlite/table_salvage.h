#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "persistence/sqlite/page_file.h"

namespace orvane::sqlite {

enum class StoredKind { integer, real, text, data };

/// A table whose rows are looked for.
struct SalvagedTable {
    std::string name;
    std::uint32_t root = 0;  ///< 0 when nobody knows
    /// Of the columns in their order, without the key, which is the first.
    std::vector<StoredKind> columns;

    /// Whether a record can be a row of this table. Rows may end before the last columns.
    bool fits(const StoredRecord& record) const;
};

/// What came of a table.
struct SalvageCount {
    std::uint64_t rows = 0;
    std::uint64_t looseRows = 0;  ///< of these, from pages that no tree leads to any more
    std::uint64_t damagedPages = 0;
};

/// Keys above the first and up to the second.
struct KeyRange {
    std::int64_t low = 0;
    std::int64_t high = 0;
};

/// Reads all rows that tables still have in a damaged file: first down the trees, around every page that
/// makes no sense; then, for the keys that are missing in such places, on pages that no tree leads to. Pages
/// that the file counts as free are left alone: what lies there was deleted.
class TableSalvage {
  public:
    /// Takes a row; false when it had one with that key before.
    using Take = std::function<bool(std::size_t table, const StoredRecord& record)>;
    using Advance = std::function<void(std::uint64_t done, std::uint64_t total)>;

    TableSalvage(const PageFile& file, std::vector<SalvagedTable> tables);

    void run(const Take& take, const Advance& advance);

    const SalvageCount& count(std::size_t table) const { return states_[table].count; }
    /// The keys that were not all reached down the tree, in order and without overlaps.
    std::vector<KeyRange> holes(std::size_t table) const;

  private:
    struct State {
        SalvageCount count;
        std::vector<KeyRange> holes;
    };

    void markFreePages();
    bool claim(std::uint32_t page);
    void walk(std::size_t table, std::uint32_t page, KeyRange keys, int depth);
    void walkInterior(std::size_t table, const TreePage& page, KeyRange keys, int depth);
    void readLeaf(std::size_t table, const TreePage& page, KeyRange keys);
    void readLoosePage(const TreePage& page);
    bool isInHole(const State& state, std::int64_t key) const;

    const PageFile& file_;
    std::vector<SalvagedTable> tables_;
    std::vector<State> states_;
    std::vector<bool> claimed_;
    std::uint64_t claimedPages_ = 0;
    StoredRecord record_;
    std::string payload_;
    const Take* take_ = nullptr;
    const Advance* advance_ = nullptr;
};

}  // namespace orvane::sqlite
