#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/process_info.h"

namespace orvane {

/// An installed application as its desktop entry describes it.
struct DesktopEntry {
    /// The desktop-file id without ".desktop".
    std::string identifier;
    /// In the user's language.
    std::string name;
    std::filesystem::path file;
    std::string startupClass;
    /// What the entry starts, without the places that files and the like are put in.
    Program program;
    /// What the session's bus starts when the application is wanted, where that may be another program.
    Program service;
    /// A terminal's window may hold anything.
    bool isTerminal = false;
    bool runsInTerminal = false;
    /// Left out of menus.
    bool isHidden = false;
    std::string flatpak;
    std::string snap;
};

/// All installed entries, in the order of their identifiers.
std::vector<DesktopEntry> installedDesktopEntries();

/// One entry, also one that the list leaves out; none when it is not installed.
std::optional<DesktopEntry> desktopEntry(std::string_view identifier);

/// A text of a desktop entry file in the user's language; none when the file cannot be read or lacks the key.
std::optional<std::string> localizedEntryValue(const std::filesystem::path& file, const char* key);

/// The identifier of an entry file: in a folder for applications its path with "-" between the parts,
/// elsewhere its name.
std::string entryIdentifier(const std::filesystem::path& file);

/// The entry file that a bundle path stands for: the file itself, or the only entry in a folder. Empty when a
/// folder holds none or several.
std::filesystem::path desktopEntryOfBundle(const std::filesystem::path& bundle);

}  // namespace orvane
