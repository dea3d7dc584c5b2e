#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/internal.h"

namespace orvane {

/// What of a set of files is safe on the disk, and what a loss of power may still take away: bytes that were
/// written and not synced, and entries of the folder that were made or removed and not synced.
class UnsyncedFiles {
  public:
    using Bytes = std::vector<std::uint8_t>;
    using Files = std::map<std::string, Bytes>;

    /// Makes these files all there are, with every byte safe.
    void restart(Files&& files);

    /// Notes that a file is there; one that was not is new in its folder.
    void opened(const std::string& path);
    void written(std::string_view path, std::int64_t offset, Bytes bytes);
    void truncated(std::string_view path, std::int64_t size);
    /// `withFolder`: the entries of the folder are safe too.
    void synced(std::string_view path, bool withFolder);
    void removed(std::string_view path, bool syncsFolder);

    /// What is left when the power goes now: of what is unsynced any part may be there, in units of a sector,
    /// and where a file grew without its bytes there may be zeros or rubbish. The same for the same seed.
    Files afterPowerCut(std::uint64_t seed) const;

  private:
    struct Change {
        std::int64_t offset;         // of the bytes; or the new size
        std::optional<Bytes> bytes;  // none: cut off or extended
    };
    struct Content {
        Bytes safe;
        std::vector<Change> unsynced;
    };
    using Entry = std::shared_ptr<Content>;
    struct EntryChange {
        std::string path;
        Entry entry;  // none: removed
    };

    static void apply(Bytes& bytes, const Change& change);
    static Bytes leftOf(const Content& content, std::mt19937_64& random);

    std::map<std::string, Entry, std::less<>> entries_;
    std::map<std::string, Entry, std::less<>> safeEntries_;
    std::vector<EntryChange> unsyncedEntries_;
};

}  // namespace orvane
