#pragma once

#include <filesystem>
#include <string>

#include "foundation/internal.h"

namespace orvane {

/// Our extension of GNOME Shell as files in the user's folder of extensions.
class GnomeExtension {
  public:
    /// What the shell calls it.
    static constexpr const char* identifier = "windows@orvane";

    GnomeExtension();

    const std::filesystem::path& folder() const { return folder_; }
    bool isInstalled() const;

    /// How an attempt to write the files has ended.
    struct Outcome {
        /// Something was written, since it was missing or another version.
        bool isChanged = false;
        /// Why it could not be done, as a clause; empty when the files are in place.
        std::string problem;
    };
    /// Writes the extension in the form for a shell of that version, such as "43.9" or "46.beta".
    Outcome install(const std::string& shellVersion) const;
    /// Removes the files; changed when there were any.
    Outcome remove() const;

  private:
    std::filesystem::path folder_;
};

}  // namespace orvane
