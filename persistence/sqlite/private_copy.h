#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

#include "foundation/error.h"
#include "foundation/internal.h"

namespace orvane::sqlite {

/// A copy of a database file for this user alone, with what its journal holds put back, or its write-ahead
/// log taken in. The file itself is read under a lock that SQLite's writers respect, and is not changed in
/// any way, however damaged it is. Blocks that cannot be read are zeros in the copy.
class PrivateCopy {
  public:
    /// Makes the copy in a new folder within `parent`. None, with an error, when the file cannot be read at
    /// all, another program writes to it for a long time, or there is no room.
    static std::optional<PrivateCopy> make(const std::filesystem::path& file,
                                           const std::filesystem::path& parent, Error* error);
    ~PrivateCopy();
    PrivateCopy(PrivateCopy&& other) noexcept;
    PrivateCopy& operator=(PrivateCopy&& other) noexcept;

    /// The folder, for other temporary files; it goes away with all it holds.
    const std::filesystem::path& folder() const { return folder_; }
    std::filesystem::path file() const { return folder_ / "copy.db"; }
    std::uint64_t unreadableBytes() const { return unreadableBytes_; }

  private:
    explicit PrivateCopy(std::filesystem::path folder) : folder_(std::move(folder)) {}

    std::filesystem::path folder_;  ///< empty once moved from
    std::uint64_t unreadableBytes_ = 0;
};

/// Whether a text can have been stored by the library: valid UTF-8.
bool isStorableText(std::string_view text);

}  // namespace orvane::sqlite
