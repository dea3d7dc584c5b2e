#include "persistence/sqlite/table_salvage.h"

#include <algorithm>
#include <limits>

#include "persistence/sqlite/private_copy.h"

namespace orvane::sqlite {

namespace {

constexpr int deepestTree = 20;  // SQLite's own limit
constexpr std::int64_t lowestKey = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t highestKey = std::numeric_limits<std::int64_t>::max();

bool fitsKind(const StoredField& field, StoredKind kind) {
    if (std::holds_alternative<std::monostate>(field)) return true;
    switch (kind) {
        case StoredKind::integer:
            return std::holds_alternative<std::int64_t>(field);
        case StoredKind::real:
            // Whole numbers are stored shorter.
            return std::holds_alternative<double>(field) || std::holds_alternative<std::int64_t>(field);
        case StoredKind::text: {
            const auto* text = std::get_if<std::string_view>(&field);
            return text && isStorableText(*text);
        }
        case StoredKind::data:
            return std::holds_alternative<StoredBytes>(field);
    }
    return false;
}

}  // namespace

bool SalvagedTable::fits(const StoredRecord& record) const {
    // The key stands before the record, and nothing in its place within it.
    if (record.fields.empty() || record.fields.size() > columns.size() + 1) return false;
    if (!std::holds_alternative<std::monostate>(record.fields.front())) return false;
    for (std::size_t i = 1; i < record.fields.size(); ++i)
        if (!fitsKind(record.fields[i], columns[i - 1])) return false;
    return true;
}

TableSalvage::TableSalvage(const PageFile& file, std::vector<SalvagedTable> tables)
    : file_(file),
      tables_(std::move(tables)),
      states_(tables_.size()),
      claimed_(std::size_t{file.pageCount()} + 1) {}

void TableSalvage::run(const Take& take, const Advance& advance) {
    take_ = &take;
    advance_ = &advance;
    markFreePages();
    bool isWhole = true;
    for (std::size_t i = 0; i < tables_.size(); ++i) {
        walk(i, tables_[i].root, {lowestKey, highestKey}, 0);
        isWhole = isWhole && states_[i].holes.empty();
    }
    if (isWhole) return;
    for (std::uint32_t number = 1; number <= file_.pageCount(); ++number) {
        if (claimed_[number]) continue;
        if (const TreePage page(file_, number); page.kind() == TreePage::Kind::leaf) readLoosePage(page);
        advance(++claimedPages_, file_.pageCount());
    }
}

/// A chain of pages that each list others.
void TableSalvage::markFreePages() {
    if (!file_.hasHeader()) return;
    std::uint32_t trunk = file_.headerField(32);
    while (claim(trunk)) {
        const PageBytes page = file_.page(trunk);
        const auto field = [&](std::size_t index) {
            return std::uint32_t{page[index * 4]} << 24 | std::uint32_t{page[index * 4 + 1]} << 16 |
                   std::uint32_t{page[index * 4 + 2]} << 8 | page[index * 4 + 3];
        };
        const std::size_t count = std::min<std::size_t>(field(1), page.size() / 4 - 2);
        for (std::size_t i = 0; i < count; ++i) claim(field(i + 2));
        trunk = field(0);
    }
}

/// False when there is no such page, or it is somebody's already.
bool TableSalvage::claim(std::uint32_t page) {
    if (page == 0 || page > file_.pageCount() || claimed_[page]) return false;
    claimed_[page] = true;
    ++claimedPages_;
    return true;
}

void TableSalvage::walk(std::size_t table, std::uint32_t number, KeyRange keys, int depth) {
    State& state = states_[table];
    const TreePage page(file_, number);
    if (page.kind() == TreePage::Kind::none || depth > deepestTree || !claim(number)) {
        if (number != 0) ++state.count.damagedPages;
        state.holes.push_back(keys);
        return;
    }
    (*advance_)(claimedPages_, file_.pageCount());
    if (page.kind() == TreePage::Kind::leaf)
        readLeaf(table, page, keys);
    else
        walkInterior(table, page, keys, depth);
}

void TableSalvage::walkInterior(std::size_t table, const TreePage& page, KeyRange keys, int depth) {
    State& state = states_[table];
    bool isBroken = false;
    for (std::size_t i = 0; i < page.cellCount(); ++i) {
        TreePage::Child child;
        // A cell that makes no sense leaves its keys to the next one, which need not have them all.
        if (!page.readChild(i, child) || child.lastKey <= keys.low || child.lastKey > keys.high) {
            isBroken = true;
            continue;
        }
        if (isBroken) state.holes.push_back({keys.low, child.lastKey});
        walk(table, child.page, {keys.low, child.lastKey}, depth + 1);
        keys.low = child.lastKey;
        if (isBroken) ++state.count.damagedPages;
        isBroken = false;
    }
    if (isBroken) {
        ++state.count.damagedPages;
        state.holes.push_back(keys);
    }
    walk(table, page.lastChild(), keys, depth + 1);
}

void TableSalvage::readLeaf(std::size_t table, const TreePage& page, KeyRange keys) {
    State& state = states_[table];
    bool isBroken = false;
    for (std::size_t i = 0; i < page.cellCount(); ++i) {
        const bool fits = page.readRecord(i, record_, payload_) && tables_[table].fits(record_) &&
                          record_.key > keys.low && record_.key <= keys.high;
        isBroken = isBroken || !fits;
        if (fits && (*take_)(table, record_)) ++state.count.rows;
    }
    if (!isBroken) return;
    ++state.count.damagedPages;
    state.holes.push_back(keys);
}

/// The rows belong to the one table that more of them fit than any other, and that misses them.
void TableSalvage::readLoosePage(const TreePage& page) {
    std::vector<std::size_t> fitting(tables_.size());
    for (std::size_t i = 0; i < page.cellCount(); ++i) {
        if (!page.readRecord(i, record_, payload_)) continue;
        for (std::size_t table = 0; table < tables_.size(); ++table)
            if (record_.fields.size() == tables_[table].columns.size() + 1 && tables_[table].fits(record_) &&
                isInHole(states_[table], record_.key))
                ++fitting[table];
    }
    const auto best = std::max_element(fitting.begin(), fitting.end());
    if (best == fitting.end() || *best == 0 || std::count(fitting.begin(), fitting.end(), *best) > 1) return;
    const auto table = static_cast<std::size_t>(best - fitting.begin());
    State& state = states_[table];
    for (std::size_t i = 0; i < page.cellCount(); ++i) {
        if (!page.readRecord(i, record_, payload_) || !tables_[table].fits(record_)) continue;
        if (!isInHole(state, record_.key) || !(*take_)(table, record_)) continue;
        ++state.count.rows;
        ++state.count.looseRows;
    }
}

bool TableSalvage::isInHole(const State& state, std::int64_t key) const {
    return std::any_of(state.holes.begin(), state.holes.end(),
                       [&](const KeyRange& hole) { return key > hole.low && key <= hole.high; });
}

std::vector<KeyRange> TableSalvage::holes(std::size_t table) const {
    std::vector<KeyRange> sorted = states_[table].holes;
    std::sort(sorted.begin(), sorted.end(),
              [](const KeyRange& left, const KeyRange& right) { return left.low < right.low; });
    std::vector<KeyRange> result;
    for (const KeyRange& hole : sorted) {
        if (!result.empty() && hole.low <= result.back().high)
            result.back().high = std::max(result.back().high, hole.high);
        else
            result.push_back(hole);
    }
    return result;
}

}  // namespace orvane::sqlite
