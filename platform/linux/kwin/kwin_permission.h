#pragma once

#include <filesystem>
#include <string>

#include "foundation/internal.h"

namespace orvane {

/// KWin shows its windows only to programs whose desktop entry asks for that. This is such an entry among the
/// user's own, for a program that was not installed with one. Blocks on files and on KDE's index of entries;
/// for commands, not for trackers.
class KwinPermission {
  public:
    /// In the user's data folder.
    KwinPermission();

    struct Outcome {
        bool isChanged = false;
        /// Why it could not be done, as a clause; empty when it is done.
        std::string problem;
    };

    /// Where the entry stands, or would.
    const std::filesystem::path& file() const { return file_; }
    /// `program` is the file that runs, not a link to it.
    Outcome grant(const std::filesystem::path& program) const;
    /// Refuses to remove an entry that is not from `grant`.
    Outcome withdraw() const;

  private:
    std::filesystem::path file_;
};

}  // namespace orvane
