#include "platform/simulated/unsynced_files.h"

#include <algorithm>
#include <cstring>

namespace orvane {

namespace {

/// What a disk writes whole or not at all.
constexpr std::int64_t sectorSize = 512;

/// How much of what is unsynced is left: nothing and everything are common, as when the system was about to
/// write or had just done so.
class Luck {
  public:
    explicit Luck(std::mt19937_64& random) : random_(random) {
        constexpr int kinds = 6;
        const auto kind = random_() % kinds;
        outOfHundred_ = kind == 0 ? 0 : kind == 1 ? 100 : random_() % 100;
    }
    bool keeps() { return random_() % 100 < outOfHundred_; }

  private:
    std::mt19937_64& random_;
    std::uint64_t outOfHundred_;
};

}  // namespace

void UnsyncedFiles::restart(Files&& files) {
    entries_.clear();
    unsyncedEntries_.clear();
    for (auto& [path, bytes] : files) {
        entries_[path] = std::make_shared<Content>();
        entries_[path]->safe = std::move(bytes);
    }
    safeEntries_ = entries_;
}

void UnsyncedFiles::opened(const std::string& path) {
    Entry& entry = entries_[path];
    if (entry) return;
    entry = std::make_shared<Content>();
    unsyncedEntries_.push_back({path, entry});
}

void UnsyncedFiles::written(std::string_view path, std::int64_t offset, Bytes bytes) {
    const auto entry = entries_.find(path);
    if (entry != entries_.end()) entry->second->unsynced.push_back({offset, std::move(bytes)});
}

void UnsyncedFiles::truncated(std::string_view path, std::int64_t size) {
    const auto entry = entries_.find(path);
    if (entry != entries_.end()) entry->second->unsynced.push_back({size, std::nullopt});
}

void UnsyncedFiles::synced(std::string_view path, bool withFolder) {
    if (const auto entry = entries_.find(path); entry != entries_.end()) {
        Content& content = *entry->second;
        for (const Change& change : content.unsynced) apply(content.safe, change);
        content.unsynced.clear();
    }
    if (!withFolder) return;
    safeEntries_ = entries_;
    unsyncedEntries_.clear();
}

void UnsyncedFiles::removed(std::string_view path, bool syncsFolder) {
    const auto entry = entries_.find(path);
    if (entry == entries_.end()) return;
    unsyncedEntries_.push_back({entry->first, nullptr});
    entries_.erase(entry);
    if (!syncsFolder) return;
    safeEntries_ = entries_;
    unsyncedEntries_.clear();
}

UnsyncedFiles::Files UnsyncedFiles::afterPowerCut(std::uint64_t seed) const {
    std::mt19937_64 random(seed);
    Luck luck(random);
    auto entries = safeEntries_;
    for (const EntryChange& change : unsyncedEntries_) {
        if (!luck.keeps()) continue;
        if (change.entry)
            entries[change.path] = change.entry;
        else
            entries.erase(change.path);
    }
    Files files;
    for (const auto& [path, entry] : entries) files[path] = leftOf(*entry, random);
    return files;
}

void UnsyncedFiles::apply(Bytes& bytes, const Change& change) {
    const auto offset = static_cast<std::size_t>(change.offset);
    if (!change.bytes) {
        bytes.resize(offset);
        return;
    }
    bytes.resize(std::max(bytes.size(), offset + change.bytes->size()));
    if (!change.bytes->empty())
        std::memcpy(bytes.data() + offset, change.bytes->data(), change.bytes->size());
}

UnsyncedFiles::Bytes UnsyncedFiles::leftOf(const Content& content, std::mt19937_64& random) {
    Luck luck(random);
    const bool leavesRubbish = random() % 4 == 0;
    Bytes bytes = content.safe;
    for (const Change& change : content.unsynced) {
        if (!change.bytes) {
            if (luck.keeps()) apply(bytes, change);
            continue;
        }
        const std::int64_t end = change.offset + static_cast<std::int64_t>(change.bytes->size());
        for (std::int64_t from = change.offset; from < end;) {
            const std::int64_t to = std::min(end, (from / sectorSize + 1) * sectorSize);
            Bytes part(change.bytes->begin() + (from - change.offset),
                       change.bytes->begin() + (to - change.offset));
            const bool isRubbish = leavesRubbish && from >= static_cast<std::int64_t>(bytes.size());
            if (isRubbish) std::ranges::generate(part, [&] { return static_cast<std::uint8_t>(random()); });
            if (luck.keeps() || isRubbish) apply(bytes, {from, std::move(part)});
            from = to;
        }
    }
    return bytes;
}

}  // namespace orvane
